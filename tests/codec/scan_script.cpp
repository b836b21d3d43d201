// SPDX-License-Identifier: Apache-2.0
// Scan scripts: their text and their rules.
#include "codec/jpeg/encode/scan_script.h"

#include <gtest/gtest.h>

#include <sstream>

#include "pictures.h"

namespace {

using namespace qel::codec;
using namespace qel::test;

std::string asText(const jpeg::ScanScript& script)
{
    std::ostringstream text;
    for (const jpeg::Scan& scan : script) {
        for (int component : scan.components) text << component << ' ';
        for (int field : {scan.first, scan.last, scan.high, scan.low}) text << '/' << field;
        text << '\n';
    }
    return text.str();
}

TEST(ScanScript, IsReadAsItIsUsuallyWritten)
{
    EXPECT_EQ(asText(jpeg::parseScanScript("# first bits\n0,1,2: 0-0, 0, 1 ;\n0: 1-5, 0, 2; # luminance\n"
                                           "2 : 1 63 0 1;\r\n0,1 2 : 0-0,1,0;0:1-63,0,0;\n\n")),
              "0 1 2 /0/0/0/1\n0 /1/5/0/2\n2 /1/63/0/1\n0 1 2 /0/0/1/0\n0 /1/63/0/0\n");
    EXPECT_EQ(asText(jpeg::parseScanScript("0;\n1 2;")), "0 /0/63/0/0\n1 2 /0/63/0/0\n");
}

// Lines that cannot be read, and scans that break the rules of the standard.
TEST(ScanScript, FaultsAreNamedWithTheirPlace)
{
    const struct {
        const char *text, *message;
    } table[] = {
        {"", "the scan script is empty"},
        {"# nothing\n", "the scan script is empty"},
        {"0;\n0: 1-5 0;", "line 2 of the scan script: a number is expected"},
        {"0: 1-5 0 1", "line 1 of the scan script: ';' expected"},
        {"\n0\n", "line 3 of the scan script: a number is expected"},
        {"0: 1-5 0 99999999999;", "line 1 of the scan script: a number is expected"},
        {"luma: 1-5 0 1;", "line 1 of the scan script: a number is expected"},
        {":0-0 0 0;", "scan 1 of the scan script: one to four components are needed"},
        {"0,0: 0-0 0 0;", "scan 1 of the scan script: components must be listed once and in ascending order"},
        {"1,0: 0-0 0 0;", "scan 1 of the scan script: components must be listed once and in ascending order"},
        {"0,3: 0-0 0 0;", "scan 1 of the scan script: the picture has not so many components"},
        {"0,1,2: 0-0 0 0; 0;", "scan 2 of the scan script: sequential and progressive scans do not mix"},
        {"0,1,2: 0-0 0 0; 0: 9-8 0 0;", "scan 2 of the scan script: the band is not within 0 to 63"},
        {"0,1,2: 0-0 0 0; 0: 1-64 0 0;", "scan 2 of the scan script: the band is not within 0 to 63"},
        {"0: 0-5 0 0;", "scan 1 of the scan script: DC and AC coefficients need scans of their own"},
        {"0,1,2: 0-0 0 0; 0,1: 1-5 0 0;", "scan 2 of the scan script: AC coefficients of more than one component"},
        {"0: 0-0 0 14;", "scan 1 of the scan script: at most 13 bits can be left to later scans"},
        {"0: 1-5 0 0;", "scan 1 of the scan script: it does not go on from where the scans before it end"},
        {"0: 0-0 0 0; 0: 0-0 0 0;", "scan 2 of the scan script: it does not go on from where the scans before it end"},
        {"0: 0-0 0 2; 0: 0-0 2 0;", "scan 2 of the scan script: it does not go on from where the scans before it end"},
        {"0,1: 0-0 0 0;", "the scan script leaves out component 2"},
    };
    for (auto& row : table)
        EXPECT_EQ(errorOf([&] { jpeg::checkScript(jpeg::parseScanScript(row.text), 3); }), row.message) << row.text;
    std::string endless;
    for (int i = 0; i < 4000; ++i) endless += "0;";
    EXPECT_NE(errorOf([&] { jpeg::parseScanScript(endless); }), "");
    for (int components = 1; components <= 4; ++components)
        for (bool hasChrominance : {false, true})
            jpeg::checkScript(jpeg::usualScript(components, hasChrominance), components);
}

}
