// SPDX-License-Identifier: Apache-2.0
// Each family's cases, in the order of the table.
#pragma once

#include <string>

namespace qel::bench {

void addLevelShiftCases();
void addColourCases();
void addSamplingCases();
void addMcuCases();
void addBlockCases();
void addHuffmanCases();
void addProgressiveCases();
void addLosslessCases();
void addCodecCases();
void addJ2kEncodeCases();
void addJ2kWaveletCases();
void addComponentTransformCases();
void addWaveletCases();
void addJ2kDecodeCases();
void addCodeBlockCases();
void addSupportCases();

// Beside busy programs: prints how long calls take on one thread and on all.
void measureLoad(const std::string& filter);

}
