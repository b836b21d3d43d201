// SPDX-License-Identifier: Apache-2.0
// T.800 Table C.2, and the states in which contexts start (Table D.7).
#include "jpeg2k/coding/mq_tables.h"

#include "jpeg2k/coding/mq_rows.h"
#include "jpeg2k/coding/mq_states.h"

// clang-format off
constexpr uint32_t owniEstimator_JPEG2K[47][4] = {
    {0x5601, 1, 1, 1}, {0x3401, 2, 6, 0}, {0x1801, 3, 9, 0}, {0x0AC1, 4, 12, 0}, {0x0521, 5, 29, 0},
    {0x0221, 38, 33, 0}, {0x5601, 7, 6, 1}, {0x5401, 8, 14, 0}, {0x4801, 9, 14, 0}, {0x3801, 10, 14, 0},
    {0x3001, 11, 17, 0}, {0x2401, 12, 18, 0}, {0x1C01, 13, 20, 0}, {0x1601, 29, 21, 0}, {0x5601, 15, 14, 1},
    {0x5401, 16, 14, 0}, {0x5101, 17, 15, 0}, {0x4801, 18, 16, 0}, {0x3801, 19, 17, 0}, {0x3401, 20, 18, 0},
    {0x3001, 21, 19, 0}, {0x2801, 22, 19, 0}, {0x2401, 23, 20, 0}, {0x2201, 24, 21, 0}, {0x1C01, 25, 22, 0},
    {0x1801, 26, 23, 0}, {0x1601, 27, 24, 0}, {0x1401, 28, 25, 0}, {0x1201, 29, 26, 0}, {0x1101, 30, 27, 0},
    {0x0AC1, 31, 28, 0}, {0x09C1, 32, 29, 0}, {0x08A1, 33, 30, 0}, {0x0521, 34, 31, 0}, {0x0441, 35, 32, 0},
    {0x02A1, 36, 33, 0}, {0x0221, 37, 34, 0}, {0x0141, 38, 35, 0}, {0x0111, 39, 36, 0}, {0x0085, 40, 37, 0},
    {0x0049, 41, 38, 0}, {0x0025, 42, 39, 0}, {0x0015, 43, 40, 0}, {0x0009, 44, 41, 0}, {0x0005, 45, 42, 0},
    {0x0001, 45, 43, 0}, {0x5601, 46, 46, 0},
};
// clang-format on

const int32_t owniInitialCtxIndexes_JPEG2K[qel::kContexts] = {46, 3, 4};
const int32_t owniInitialMPS_JPEG2K[qel::kContexts] = {};

namespace qel {

namespace {

constexpr MqStates makeMqStates()
{
    MqStates states = {};
    for (int i = 0; i < 2 * 47; ++i) {
        const uint32_t(&row)[4] = owniEstimator_JPEG2K[i / 2];
        uint32_t mps = i & 1, qe = row[0];
        MqState& state = states.of[i];
        state.next[mps] = uint16_t(2 * row[1] + mps);
        state.next[1 - mps] = uint16_t(2 * row[2] + (mps ^ row[3]));
        state.mps = uint8_t(mps);
        state.shift = uint8_t(__builtin_clz(qe) - 16);
        state.qe = uint16_t(qe);
    }
    return states;
}

constexpr MqRows makeMqRows()
{
    MqRows rows = {};
    for (uint32_t i = 0; i < 2 * 47; ++i) {
        const auto& [qe, afterMps, afterLps, isSwitched] = owniEstimator_JPEG2K[i / 2];
        uint32_t mps = i & 1;
        rows.of[i] = {uint64_t(qe) << 48, mqRow(afterMps, mps), mqRow(afterLps, mps ^ isSwitched)};
    }
    return rows;
}

}

constexpr MqStates kMqStates = makeMqStates();
constexpr MqRows kMqRows = makeMqRows();

}
