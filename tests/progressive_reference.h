// SPDX-License-Identifier: Apache-2.0
// Progressive scans decoded one bit at a time, as the standard draws it (T.81 G.2), to hold the library against.
#pragma once

#include "huffman_reference.h"

namespace qel::test {

// `block` is the caller's; `run` counts the blocks that an end of band still ends.
struct ReferenceProgressiveDecoder : ReferenceDecoder {
    uint32_t run = 0;

    QelStatus dcFirst(int al)
    {
        int s = symbol(dc);
        if (s < 0 || !has(s & 15)) return qelStsJPEGOutOfBufErr;
        if (s & 15) lastDc = int16_t(lastDc + value(s & 15));
        block[0] = int16_t(lastDc << al);
        return qelStsNoErr;
    }

    QelStatus dcRefine(int al)
    {
        if (!has(1)) return qelStsJPEGOutOfBufErr;
        block[0] = int16_t(block[0] | int(take(1)) << al);
        return qelStsNoErr;
    }

    QelStatus acFirst(int ss, int se, int al)
    {
        if (run > 0) return --run, qelStsNoErr;
        for (int k = ss; k <= se; ++k) {
            int s = symbol(ac);
            if (s < 0) return qelStsJPEGOutOfBufErr;
            if (endsBand(s)) return startRun(s) ? (--run, qelStsNoErr) : qelStsJPEGOutOfBufErr;
            k += s >> 4;
            int n = s & 15;
            if (!has(n)) return qelStsJPEGOutOfBufErr;
            if (n == 0) continue;
            int v = value(n);
            if (k > 63) return qelStsJPEGCoeffPosErr;
            block[kScan[k]] = int16_t(v << al);
        }
        return qelStsNoErr;
    }

    QelStatus acRefine(int ss, int se, int al)
    {
        int k = ss;
        while (run == 0 && k <= se) {
            int s = symbol(ac);
            if (s < 0) return qelStsJPEGOutOfBufErr;
            if (endsBand(s)) {
                if (!startRun(s)) return qelStsJPEGOutOfBufErr;
                break;
            }
            int added = 0;
            if (s & 15) {
                if (!has(1)) return qelStsJPEGOutOfBufErr;
                added = take(1) ? 1 : -1;
            }
            for (int zeros = s >> 4; k <= se && (block[kScan[k]] != 0 || zeros > 0); ++k)
                if (block[kScan[k]] == 0)
                    --zeros;
                else if (!correct(block[kScan[k]], al))
                    return qelStsJPEGOutOfBufErr;
            if (added != 0 && k > se) return qelStsJPEGCoeffPosErr;
            if (added != 0) block[kScan[k]] = int16_t(added * (1 << al));
            ++k;
        }
        if (run == 0) return qelStsNoErr;
        for (; k <= se; ++k)
            if (block[kScan[k]] != 0 && !correct(block[kScan[k]], al)) return qelStsJPEGOutOfBufErr;
        --run;
        return qelStsNoErr;
    }

private:
    static bool endsBand(int s) { return (s & 15) == 0 && s >> 4 < 15; }

    bool startRun(int s)
    {
        int n = s >> 4;
        if (!has(n)) return false;
        run = (1u << n) + take(n);
        return true;
    }

    bool correct(int16_t& coefficient, int al)
    {
        if (!has(1)) return false;
        if (take(1)) coefficient = int16_t(coefficient + (coefficient > 0 ? 1 << al : -(1 << al)));
        return true;
    }
};

}
