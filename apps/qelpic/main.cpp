// SPDX-License-Identifier: Apache-2.0
// qelpic: encodes and decodes picture files with the codec built on libqeljx.
#include <new>

#include "qelpic/command_line.h"
#include "qelpic/console.h"

namespace qel::qelpic {
namespace {

ExitCode run(const std::string& command, const Options& options)
{
    if (command == "encode") return encode(options);
    if (command == "decode") return decode(options);
    return command == "info" ? info(options) : compare(options);
}

int run(int argc, char** argv)
{
    CommandLine line;
    try {
        line.parse(argc, argv);
        return run(line.command().get_name(), line.options());
    } catch (const CLI::Success& help) {
        return line.app().exit(help);
    } catch (const CLI::ParseError& error) {
        say(std::string("qelpic: ") + error.what() + "; see qelpic --help");
        return kUsage;
    }
}

}
}

int main(int argc, char** argv)
{
    using namespace qel::qelpic;
    try {
        return run(argc, argv);
    } catch (const std::bad_alloc&) {
        say("qelpic: not enough memory");
    } catch (const std::exception& error) {
        say(std::string("qelpic: ") + error.what());
    }
    return kFailed;
}
