// SPDX-License-Identifier: Apache-2.0
// Scan scripts: the usual one, reading of text, and the rules.
#include "codec/jpeg/encode/scan_script.h"

#include <algorithm>
#include <charconv>
#include <numeric>
#include <string>
#include <tuple>

#include "codec/base/error.h"
#include "codec/jpeg/headers.h"
#include "codec/jpeg/progression.h"

namespace qel::codec::jpeg {

namespace {

// More than any picture can use: each scan codes at least one bit of one coefficient.
constexpr size_t kMaxScriptScans = 4 * 64 * (kMaxPointTransform + 1);

class ScriptReader {
public:
    explicit ScriptReader(std::string_view text) : text_(text) {}

    bool atEnd()
    {
        skipBlanks();
        return text_.empty();
    }

    Scan scan()
    {
        Scan scan;
        while (!takes(':')) {
            if (takes(';')) return scan;
            scan.components.push_back(number());
        }
        for (int* field : {&scan.first, &scan.last, &scan.high, &scan.low}) *field = number();
        if (!takes(';')) fail("';' expected");
        return scan;
    }

    [[noreturn]] void fail(const std::string& what) const
    {
        throw CodecError("line " + std::to_string(line_) + " of the scan script: " + what);
    }

private:
    bool takes(char wanted)
    {
        skipBlanks();
        if (text_.empty() || text_[0] != wanted) return false;
        text_.remove_prefix(1);
        return true;
    }

    int number()
    {
        skipBlanks();
        int value = 0;
        auto [end, error] = std::from_chars(text_.data(), text_.data() + text_.size(), value);
        if (error != std::errc() || value < 0) fail("a number is expected");
        text_.remove_prefix(size_t(end - text_.data()));
        return value;
    }

    void skipBlanks()
    {
        bool inComment = false;
        while (!text_.empty() &&
               (inComment || std::string_view(" \t\r\n,-#").find(text_[0]) != std::string_view::npos)) {
            if (text_[0] == '#') inComment = true;
            if (text_[0] == '\n') {
                inComment = false;
                ++line_;
            }
            text_.remove_prefix(1);
        }
    }

    std::string_view text_;
    int line_ = 1;
};

// Adds a scan of the band for each component by itself.
void addBand(ScanScript& script, const std::vector<int>& components, int first, int last, int high, int low)
{
    for (int c : components) script.push_back({{c}, first, last, high, low});
}

}

ScanScript usualScript(int components, bool hasChrominance)
{
    std::vector<int> all(components);
    std::iota(all.begin(), all.end(), 0);
    ScanScript script = {{all, 0, 0, 0, 1}};
    if (hasChrominance && components == 3) {
        // Little is in the chrominance that would be worth a band of its own.
        addBand(script, {0}, 1, 5, 0, 2);
        addBand(script, {2, 1}, 1, 63, 0, 1);
        addBand(script, {0}, 6, 63, 0, 2);
        addBand(script, {0}, 1, 63, 2, 1);
        script.push_back({all, 0, 0, 1, 0});
        addBand(script, {2, 1, 0}, 1, 63, 1, 0);
        return script;
    }
    addBand(script, all, 1, 5, 0, 2);
    addBand(script, all, 6, 63, 0, 2);
    addBand(script, all, 1, 63, 2, 1);
    script.push_back({all, 0, 0, 1, 0});
    addBand(script, all, 1, 63, 1, 0);
    return script;
}

ScanScript parseScanScript(std::string_view text)
{
    ScriptReader reader(text);
    ScanScript script;
    while (!reader.atEnd()) {
        if (script.size() == kMaxScriptScans) reader.fail("too many scans");
        script.push_back(reader.scan());
    }
    if (script.empty()) throw CodecError("the scan script is empty");
    return script;
}

void checkScript(const ScanScript& script, int components)
{
    Info info;
    info.components.resize(components);
    Progression progression(info);
    bool sequential = !script.empty() && script[0].isSequential();
    for (size_t i = 0; i < script.size(); ++i) {
        const Scan& scan = script[i];
        auto require = [&](bool holds, const char* rule) {
            if (!holds) throw CodecError("scan " + std::to_string(i + 1) + " of the scan script: " + rule);
        };
        const std::vector<int>& listed = scan.components;
        require(!listed.empty() && listed.size() <= 4, "one to four components are needed");
        require(std::ranges::adjacent_find(listed, std::greater_equal()) == listed.end(),
                "components must be listed once and in ascending order");
        require(listed.back() < components, "the picture has not so many components");
        require(scan.isSequential() == sequential, "sequential and progressive scans do not mix");
        require(scan.first <= scan.last && scan.last <= 63, "the band is not within 0 to 63");
        require(sequential || scan.first > 0 || scan.last == 0, "DC and AC coefficients need scans of their own");
        require(scan.first == 0 || listed.size() == 1, "AC coefficients of more than one component");
        require(scan.low <= kMaxPointTransform, "at most 13 bits can be left to later scans");
        ScanHeader header;
        for (int c : listed) header.components.push_back({c, 0, 0});
        std::tie(header.first, header.last, header.high, header.low) =
            std::tie(scan.first, scan.last, scan.high, scan.low);
        require(progression.accept(header), "it does not go on from where the scans before it end");
    }
    for (int c = 0; c < components; ++c)
        if (!progression.has(c)) throw CodecError("the scan script leaves out component " + std::to_string(c));
}

}
