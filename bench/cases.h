// Each family's cases, in the order of the table.
#pragma once

namespace qel::bench {

void addLevelShiftCases();
void addSamplingCases();
void addSupportCases();

}
