// SPDX-License-Identifier: Apache-2.0
// The manual page and the completions, as those who read and run them take them.
#include <iterator>
#include <vector>

#include "qelpic.h"

namespace {

using namespace qel::test;

// The programs that are not there are left out; the pages are in QELPIC_PAGES.
class Pages : public Qelpic {
protected:
    static bool isInstalled(const std::string& program)
    {
        bool is = shell("command -v " + program).exitCode == 0;
        if (!is) std::fprintf(stderr, "no %s\n", program.c_str());
        return is;
    }
};

TEST_F(Pages, ManualPageHasAllOptionsAndNoWarnings)
{
    std::string page = textOf(QELPIC_PAGES "/qelpic.1");
    EXPECT_EQ(page.find('@'), std::string::npos) << "a place that was not filled";
    for (const char* text :
         {".SH OPTIONS OF compare\n", "\\fB\\-\\-min\\-psnr\\fR \\fIDB\\fR", ".SS \"For JPEG 2000 files\"",
          "\\fBqelpic encode\\fR [OPTIONS] \\fIINPUT\\fR \\fIOUTPUT\\fR\n"})
        EXPECT_NE(page.find(text), std::string::npos) << text;
    if (!isInstalled("man")) return;
    Outcome outcome = shell("man --warnings -l " QELPIC_PAGES "/qelpic.1");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_NE(outcome.output.find("--no-component-transform"), std::string::npos);
}

// As their functions are called when the tab key is pressed behind what has been typed.
TEST_F(Pages, ShellsComplete)
{
    store("complete.bash", "source " QELPIC_PAGES "/qelpic\ncompopt() { :; }\n"
                           "read -ra COMP_WORDS <<<\"$1\"; [[ $1 != *' ' ]] || COMP_WORDS+=('')\n"
                           "COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _qelpic; printf '%s\\n' \"${COMPREPLY[@]}\"\n");
    store("complete.fish", "source " QELPIC_PAGES "/qelpic.fish\ncomplete -C $argv[1]\n");
    const struct {
        const char *typed, *first; // of the words that are offered, sorted
        int words;
    } table[] = {{"qelpic enc", "encode", 1},
                 {"qelpic encode --samp", "--sampling", 1},
                 {"qelpic encode --sampling 44", "440", 2},
                 {"qelpic encode --style ", "bypass", 6},
                 {"qelpic decode --format p", "pam", 6},
                 {"qelpic info --rec", "--recursive", 1},
                 {"qelpic compare --quality", "", 0}};
    for (std::string program : {"bash", "fish"})
        for (auto& row : table) {
            if (!isInstalled(program)) continue;
            std::istringstream offered(
                shell("HOME=. " + program + " complete." + program + " '" + row.typed + "' | cut -f1 | LC_ALL=C sort")
                    .output);
            std::vector<std::string> words{std::istream_iterator<std::string>(offered), {}};
            EXPECT_EQ(int(words.size()), row.words) << program << ": " << row.typed;
            EXPECT_EQ(words.empty() ? "" : words[0], row.first) << program << ": " << row.typed;
        }
    if (isInstalled("zsh")) {
        EXPECT_EQ(shell("zsh -n " QELPIC_PAGES "/_qelpic").errors, "");
    }
}

}
