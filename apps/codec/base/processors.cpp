// SPDX-License-Identifier: Apache-2.0
// Quotas are read where Linux systems mount their control groups.
#include "codec/base/processors.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include <tbb/info.h>

namespace qel::codec {

namespace {

using Path = std::filesystem::path;

constexpr double kUnlimited = std::numeric_limits<double>::infinity();

// The words of a small file; none where it cannot be read.
std::vector<std::string> wordsOf(const Path& file)
{
    std::ifstream in(file);
    std::vector<std::string> words;
    for (std::string word; in >> word;) words.push_back(word);
    return words;
}

// "max" and -1 stand for no limit, and so does what is no number.
double quotient(const std::string& quota, const std::string& period)
{
    double time = std::strtod(quota.c_str(), nullptr), all = std::strtod(period.c_str(), nullptr);
    return time > 0 && all > 0 ? time / all : kUnlimited;
}

// What one group itself is allowed, in either version's files.
double quotaOf(const Path& group)
{
    std::vector<std::string> both = wordsOf(group / "cpu.max");
    if (both.size() == 2) return quotient(both[0], both[1]);
    std::vector<std::string> quota = wordsOf(group / "cpu.cfs_quota_us"), period = wordsOf(group / "cpu.cfs_period_us");
    return quota.empty() || period.empty() ? kUnlimited : quotient(quota[0], period[0]);
}

// A group has no more than those that it is in. Containers may see their own group as the topmost, under a name that
// only the host has: what is not there limits nothing.
double quotaUpwards(const Path& top, Path group)
{
    double quota = quotaOf(top);
    for (; group.has_relative_path(); group = group.parent_path())
        quota = std::min(quota, quotaOf(top / group.relative_path()));
    return quota;
}

bool hasProcessorTime(const std::string& controllers)
{
    return ("," + controllers + ",").find(",cpu,") != std::string::npos;
}

}

double processorQuota(const Path& root)
{
    std::ifstream groups(root / "proc/self/cgroup");
    double quota = kUnlimited;
    // Number, controllers and group, between colons; groups of version 2 have no controllers there.
    for (std::string number, controllers, group; std::getline(groups, number, ':');) {
        std::getline(groups, controllers, ':');
        std::getline(groups, group);
        Path mounts = root / "sys/fs/cgroup";
        if (controllers.empty()) quota = std::min(quota, quotaUpwards(mounts, group));
        if (!hasProcessorTime(controllers)) continue;
        for (const std::string& name : {controllers, std::string("cpu")})
            quota = std::min(quota, quotaUpwards(mounts / name, group));
    }
    return quota;
}

int usableProcessors()
{
    int bound = tbb::info::default_concurrency();
    double quota = std::ceil(processorQuota("/"));
    return quota < bound ? int(quota) : bound;
}

int idleProcessors(const Path& root)
{
    auto all = int(sysconf(_SC_NPROCESSORS_ONLN));
    // Three averages, then threads that run or could run, the calling one included, of how many there are.
    std::vector<std::string> load = wordsOf(root / "proc/loadavg");
    if (load.size() < 4) return all;
    int runnable = std::atoi(load[3].c_str());
    return std::clamp(all + 1 - runnable, 0, all);
}

}
