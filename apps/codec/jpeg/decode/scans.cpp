// SPDX-License-Identifier: Apache-2.0
#include "codec/jpeg/decode/scans.h"

#include <string>

#include "codec/base/error.h"

namespace qel::codec::jpeg {

namespace {

// What is followed of an endless row of scans. Real files have about ten; a few bytes are enough for one that passes
// over all blocks.
constexpr int kMaxScans = 500;
constexpr int64_t kMaxBlocksPassed = int64_t(1) << 29;

}

Scans::Scans(Bytes file)
    : file_(file), headers_(file), first_(*headers_.nextScan(2)), progression_(info()), steps_(info().components.size())
{}

bool Scans::take(const ScanHeader& scan)
{
    for (auto& component : scan.components) {
        const Component& c = info().components[component.index];
        blocksPassed_ += int64_t(blocksFor(c.width)) * blocksFor(c.height);
    }
    if (info().scans > kMaxScans || blocksPassed_ > kMaxBlocksPassed) {
        warnings_.push_back("scans from number " + std::to_string(info().scans) + " on are left out");
        return false;
    }
    for (auto& component : scan.components) {
        bool isNew = !progression_.has(component.index);
        if (!isNew && info().process != Process::progressive) {
            warnings_.push_back("scans that repeat a component are left out");
            return false;
        }
        if (isNew && info().process != Process::lossless)
            steps_[component.index] = headers_.quantizer(info().components[component.index]);
    }
    progression_.accept(scan);
    return true;
}

std::optional<ScanHeader> Scans::behind(const ScanDecoder& coder)
{
    if (std::string damage = coder.damage(); !damage.empty()) warnings_.push_back(damage);
    return from(coder.position());
}

std::optional<ScanHeader> Scans::from(size_t position)
{
    try {
        return headers_.nextScan(position);
    } catch (const CodecError& error) {
        warnings_.push_back(error.what());
        return std::nullopt;
    }
}

void Scans::noteMissing()
{
    Warnings missing = progression_.missing(info().process == Process::progressive);
    warnings_.insert(warnings_.end(), missing.begin(), missing.end());
}

}
