// Rows of the frame: _help, _test and _quit.

#include "core/Bits.h"
#include "core/Helpers.h"
#include "core/Text.h"
#include "shell/Rows.h"
#include "shell/Shell.h"

namespace vortelm::shell {

namespace {

void Say(Session& s, std::string_view text) {
    Text2Buffer(s.st, std::string(text) + CrLf());
}

// Lists the listed rows in table order; the first group has no heading.
RowResult Help(Session& s) {
    int32_t group = 1;
    for (int i = 0; i < s.table.shellCommandCount; ++i) {
        const ShellCommandRecord& r = s.table.shellCommands[i];
        if (r.listed == 0) continue;
        if (r.group != group) {
            Say(s, "");
            Say(s, r.group >= 0 && r.group < static_cast<int32_t>(s.table.shellGroupNames.size())
                       ? s.table.shellGroupNames[r.group]
                       : std::string());
            Say(s, kGroupStars);
            group = r.group;
        }
        Say(s, r.description + ": " + r.usage);
    }
    Say(s, " ");
    return {};
}

// A self-test of the 24-bit rotations: only the second result is shown.
RowResult Test(Session& s) {
    int32_t v = HexValue("00A38F");
    v = RotateRight(v, 4, true, 24);
    std::string text = HexText(v, 6);
    v = HexValue("A38F00");
    v = RotateLeft(v, 4, true, 24);
    text = HexText(v, 6);
    Say(s, text);
    return {};
}

RowResult Quit(Session& s) {
    if (s.shutDown) s.shutDown();
    return {};
}

constexpr RowBinding kRows[] = {
    {"_help", &Help},
    {"_test", &Test},
    {"_quit", &Quit},
};

}  // namespace

std::span<const RowBinding> FrameRows() {
    return kRows;
}

}  // namespace vortelm::shell
