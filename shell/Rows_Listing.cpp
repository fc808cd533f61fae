// Rows of the view group that list the selections on the terminal, and the
// row that clears the terminal.

#include "core/Text.h"
#include "shell/Rows.h"
#include "shell/ViewListing.h"

namespace vortelm::shell {

namespace {

RowResult ViewWord(Session& s) {
    ShowListing(s.st, ListingMode::Word);
    return {};
}

RowResult ViewLong(Session& s) {
    ShowListing(s.st, ListingMode::Long);
    return {};
}

RowResult ViewByte(Session& s) {
    ShowListing(s.st, ListingMode::Byte);
    return {};
}

// With an argument whose number value is not 0 the bytes of each word are
// swapped.
RowResult ViewAscii(Session& s) {
    const bool swapped = s.parsedParameterCount > 0 && s.parsedParameters[0].decimal != 0;
    ShowListing(s.st, swapped ? ListingMode::AsciiSwapped : ListingMode::Ascii);
    return {};
}

RowResult ClearTerminalWindow(Session& s) {
    ClearTerminal(s.st);
    return {};
}

constexpr RowBinding kRows[] = {
    {"_viewword", &ViewWord},   {"_viewlong", &ViewLong},
    {"_viewbyte", &ViewByte},   {"_clearterminalwindow", &ClearTerminalWindow},
    {"_viewascii", &ViewAscii},
};

}  // namespace

std::span<const RowBinding> ListingViewRows() {
    return kRows;
}

}  // namespace vortelm::shell
