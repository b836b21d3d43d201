// SPDX-License-Identifier: Apache-2.0
// Runs a check against every build of a kernel table that this processor can run.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <deque>
#include <string_view>
#include <vector>

#include "guarded.h"
#include "random.h"

namespace qel::test {

// The environment variable QELJX_TEST_BUILD names the one build to test, as emulation is slow.
inline bool isWanted(const char* build)
{
    const char* only = getenv("QELJX_TEST_BUILD");
    return only == nullptr || std::string_view(only) == build;
}

inline bool canRun(const char* build)
{
    if (!isWanted(build)) return false;
#if QEL_X86
    std::string_view name = build;
    if (name == "avx2") return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2");
    // Where AVX-512 is emulated, its tests run or crash: skipping them would pass for success.
    if (name == "avx512" && QEL_EMULATE_AVX512) return true;
    if (name == "avx512") return __builtin_cpu_supports("avx512vbmi2") && __builtin_cpu_supports("avx512vl");
#endif
    return true;
}

// check(table) for each build but Table::scalar, which the check compares with.
template <class Table, class Check> void everyBuild(Check check)
{
    struct Build {
        const char* name;
        const Table* table;
    };
    std::vector<Build> builds = {
        {"baseline", &Table::baseline},
        {"wide16", &Table::wide16},
        {"wide32", &Table::wide32},
        {"wide64", &Table::wide64},
#if QEL_X86
        {"avx2", &Table::avx2},
#endif
    };
    if constexpr (QEL_X86 && requires { Table::avx512; }) builds.push_back({"avx512", &Table::avx512});
    for (auto& build : builds) {
        if (!canRun(build.name)) continue;
        SCOPED_TRACE(build.name);
        check(*build.table);
        if (testing::Test::HasFailure()) return;
    }
}

// What a kernel has left in memory, as bytes to compare.
template <class T> std::vector<uint8_t> bytesOf(const T& object)
{
    auto* first = reinterpret_cast<const uint8_t*>(&object);
    return {first, first + sizeof object};
}
template <class T> std::vector<uint8_t> bytesOf(const Guarded<T>& memory)
{
    EXPECT_TRUE(memory.intact());
    auto* first = reinterpret_cast<const uint8_t*>(memory.data());
    return {first, first + memory.sizeInBytes()};
}

// run(table, random, round) does the same for every build and the scalar one; what it returns is compared.
template <class Table, class Run> void everyRoundEqualsScalar(int rounds, Run run)
{
    everyBuild<Table>([&](const Table& table) {
        for (int round = 0; round < rounds; ++round) {
            Random random{unsigned(round)}, sameRandom{unsigned(round)};
            ASSERT_TRUE(run(table, random, round) == run(Table::scalar, sameRandom, round)) << round;
        }
    });
}

// Lengths around every step of a row: 1 to 200, and some long ones.
template <class Check> void everyLength(Check check)
{
    for (int len = 1; len <= 200; ++len) check(len);
    for (int len : {511, 512, 513, 1000, 4099}) check(len);
}

// Random elements for a kernel to read or write; floats are finite, so that they can be compared.
struct Room {
    size_t bytes;
    void (*fill)(Random& random, uint8_t* p, size_t bytes);
};
template <class T> Room room(size_t count)
{
    return {count * sizeof(T), [](Random& random, uint8_t* p, size_t bytes) {
                if constexpr (std::is_same_v<T, float>)
                    for (size_t i = 0; i < bytes; i += sizeof(float)) {
                        float value = float(random.between(-(1 << 24), 1 << 24)) / 4096;
                        memcpy(p + i, &value, sizeof value);
                    }
                else
                    random.fill((T*)p, bytes / sizeof(T));
            }};
}

// A place in memory that becomes what a kernel takes there.
struct Address {
    uint8_t* p;

    template <class T> operator T*() const { return (T*)p; }
    Address operator+(size_t bytes) const { return {p + bytes}; }
};

// Guarded rooms, `offset` bytes off their alignment.
class Rooms {
public:
    Rooms(const std::vector<Room>& rooms, Fault fault, size_t offset)
    {
        for (const Room& room : rooms) memory_.emplace_back(room.bytes, fault, offset);
    }
    Address operator[](size_t i) { return {memory_[i].data()}; }

    bool intactAndSameAs(const Rooms& other) const
    {
        for (size_t i = 0; i < memory_.size(); ++i)
            if (!memory_[i].intact() || memcmp(memory_[i].data(), other.memory_[i].data(), memory_[i].size()) != 0)
                return false;
        return true;
    }

private:
    std::deque<Guarded<uint8_t>> memory_;
};

// Both calls, tested(rooms) and expected(rooms), make the same of the same random data, and touch nothing beside it.
template <class Tested, class Expected> void expectSame(Random& random, const std::vector<Room>& rooms, Fault fault,
                                                        size_t offset, Tested tested, Expected expected)
{
    Rooms ours(rooms, fault, offset), theirs(rooms, Fault::after, 0);
    for (size_t i = 0; i < rooms.size(); ++i) {
        rooms[i].fill(random, ours[i], rooms[i].bytes);
        memcpy(theirs[i].p, ours[i].p, rooms[i].bytes);
    }
    tested(ours);
    expected(theirs);
    ASSERT_TRUE(ours.intactAndSameAs(theirs));
}

// call(table, rooms, length) is the same for every build and the scalar one, at every length, on both sides of a
// faulting page and at odd addresses; roomsOf(length) are what it works on.
template <class Table, class RoomsOf, class Call> void everyRowEqualsScalar(RoomsOf roomsOf, Call call)
{
    everyBuild<Table>([&](const Table& table) {
        Random random(1);
        everyLength([&](int length) {
            std::vector<Room> rooms = roomsOf(size_t(length));
            for (auto fault : {Fault::after, Fault::before}) {
                SCOPED_TRACE(length);
                expectSame(
                    random, rooms, fault, size_t(length % 4), [&](Rooms& r) { call(table, r, length); },
                    [&](Rooms& r) { call(Table::scalar, r, length); });
                if (testing::Test::HasFatalFailure()) return;
            }
        });
    });
}

}
