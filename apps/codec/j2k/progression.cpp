// SPDX-License-Identifier: Apache-2.0
// All five progressions are one: precincts are put in order, then taken in groups, each group layer by layer.
#include "codec/j2k/progression.h"

#include <algorithm>
#include <span>
#include <tuple>

namespace qel::codec::j2k {

namespace {

using Places = std::vector<PacketPlace>;

// Where, on the reference grid, cell number `cell` of a partition begins; the first one where the tile does, if the
// partition does not begin a cell there.
uint32_t gridPosition(uint32_t cell, int cellBits, uint32_t first, uint32_t tileFirst, uint64_t step)
{
    uint64_t start = uint64_t(cell) << cellBits;
    return start < first ? tileFirst : uint32_t(start * step);
}

void addPlaces(const Size& size, const Tile& tile, int c, int r, int endLayer, Places& places)
{
    const TileComponent& component = tile.components[size_t(c)];
    const Resolution& resolution = component.resolutions[size_t(r)];
    const Grid& grid = resolution.precinctGrid;
    int halvings = component.coding.levels - r;
    uint64_t stepX = uint64_t(size.components[size_t(c)].dx) << halvings;
    uint64_t stepY = uint64_t(size.components[size_t(c)].dy) << halvings;
    for (uint32_t index = 0; index < resolution.precincts.size(); ++index) {
        if (resolution.precincts[index].layersRead >= endLayer) continue;
        PacketPlace place;
        place.x = gridPosition(grid.firstColumn + index % grid.across, grid.widthBits, resolution.rect.x0, tile.rect.x0,
                               stepX);
        place.y =
            gridPosition(grid.firstRow + index / grid.across, grid.heightBits, resolution.rect.y0, tile.rect.y0, stepY);
        place.precinct = index;
        place.component = uint16_t(c);
        place.resolution = uint8_t(r);
        places.push_back(place);
    }
}

Places placesOf(const Size& size, const Tile& tile, const Progression& progression, int endLayer)
{
    Places places;
    int endComponent = std::min(progression.endComponent, int(tile.components.size()));
    for (int r = progression.firstResolution; r < std::min(progression.endResolution, kMaxLevels + 1); ++r)
        for (int c = progression.firstComponent; c < endComponent; ++c)
            if (r < int(tile.components[size_t(c)].resolutions.size())) addPlaces(size, tile, c, r, endLayer, places);
    return places;
}

// By resolution, component and precinct they are already.
void sort(Places& places, Order order)
{
    auto by = [&](auto key) { std::ranges::stable_sort(places, {}, key); };
    using Place = PacketPlace;
    switch (order) {
    case Order::rpcl:
        return by([](const Place& p) { return std::tuple(p.resolution, p.y, p.x, p.component); });
    case Order::pcrl:
        return by([](const Place& p) { return std::tuple(p.y, p.x, p.component, p.resolution); });
    case Order::cprl:
        return by([](const Place& p) { return std::tuple(p.component, p.y, p.x, p.resolution); });
    default:
        return;
    }
}

// Number of places at the front that share their layers.
size_t groupSize(std::span<const PacketPlace> places, Order order)
{
    if (order == Order::lrcp) return places.size();
    if (order != Order::rlcp) return 1;
    auto isOther = [&](const PacketPlace& p) { return p.resolution != places[0].resolution; };
    return size_t(std::ranges::find_if(places, isOther) - places.begin());
}

}

bool forPackets(const Size& size, const Tile& tile, const Progression& progression,
                const std::function<bool(const PacketPlace&, int)>& read)
{
    int endLayer = std::min(progression.endLayer, tile.style.layers);
    Places places = placesOf(size, tile, progression, endLayer);
    sort(places, progression.order);
    auto layersRead = [&](const PacketPlace& p) {
        return tile.components[p.component].resolutions[p.resolution].precincts[p.precinct].layersRead;
    };
    for (std::span<const PacketPlace> rest = places; !rest.empty();) {
        auto group = rest.first(groupSize(rest, progression.order));
        rest = rest.subspan(group.size());
        for (int layer = layersRead(*std::ranges::min_element(group, {}, layersRead)); layer < endLayer; ++layer)
            for (const PacketPlace& place : group)
                if (layersRead(place) == layer && !read(place, layer)) return false;
    }
    return true;
}

}
