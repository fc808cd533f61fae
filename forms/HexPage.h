#pragma once
// The hex page of the main window without its widgets: 16 rows of 16 bytes
// of dump memory from any multiple of 16, the cursor, the marking by keys
// and mouse, the editing of a byte, the page box, the scroll bar inside a
// 64 KiB segment and the segment buttons. The widgets forward their events
// here and draw what cell() and the row texts give.

#include <cstdint>
#include <string>
#include <string_view>

#include "core/ProgramState.h"

namespace vortelm::forms {

// What the hex page asks of its drawing.
class HexPageView {
  public:
    virtual ~HexPageView() = default;
    // Paints the 256 cells and 32 labels from the page (RefreshMemory).
    virtual void drawCells() = 0;
    // Sets the scroll bar; a change of its value comes back as
    // HexPage::scrollChanged.
    virtual void setScrollValue(int value) = 0;
    // Gives a cell the focus with its text selected (start 0, length 2).
    virtual void focusCell(int index) = 0;
    // Puts a text into one cell (the old byte after a refused edit).
    virtual void setCellText(int index, const std::string& text) = 0;
    // Puts a text into the page box with all of it selected.
    virtual void setPageText(const std::string& text) = 0;
};

enum class HexKey {
    Shift,
    Ctrl,
    Escape,
    PageUp,
    PageDown,
    Left,
    Right,
    Up,
    Down,
    Delete,
    Edit,
    Other
};

// How one cell is drawn; colours as the preference keys hold them.
struct CellLook {
    std::string text;
    int32_t foreground = 0;
    int32_t background = 0;
};

class HexPage {
  public:
    HexPage(ProgramState& st, HexPageView& view) : st_(st), view_(view) {}

    // ---- the window's values
    int32_t actPage = 0;  // top row, in units of 16 bytes
    int16_t row = 0;
    int16_t column = 0;
    int16_t selectingByKey = 0;
    int16_t ctrlHeld = 0;
    int16_t selectingByMouse = 0;
    int16_t scrollSync = 0;

    // ---- drawing
    [[nodiscard]] CellLook cell(int index);
    [[nodiscard]] std::string rowAddressText(int rowIndex) const;  // LColumn
    [[nodiscard]] std::string rowText(int rowIndex);               // LMemViewAscii
    [[nodiscard]] std::string pageText() const;                    // TActPage

    // ---- interfaces
    void RefreshMemory() { view_.drawCells(); }
    void GotoPage(int32_t page1);
    [[nodiscard]] int32_t getcursoraddress() const { return actPage * 16 + row * 16 + column; }
    [[nodiscard]] static int32_t MaxPageAddress(int32_t x) { return x > 0xFFFF00 ? 0xFFFF00 : x; }

    // ---- keys and mouse on a cell
    void keyDown(int index, HexKey key);
    // cellText: the cell's text after the key (read by an edit key).
    void keyUp(int index, HexKey key, std::string_view cellText);
    void mouseDown(int index, bool ctrl);
    void mouseMove(int index);
    void mouseUp(int index);
    // The edit of the byte under a cell from the cell's text.
    void editCell(int index, std::string_view text);

    // ---- page box, scroll bar, segment buttons
    void pageTextChanged(std::string_view text);
    // true when the value is good (the cell 0 then takes the focus).
    bool pageEnter(std::string_view text);
    void pageFocusLost(std::string_view text);
    void scrollChanged(int value);
    void segmentUp();
    void segmentDown();

    // ---- the edit operations on the selections
    void Copy(bool inTextControl);
    void Cut();
    void Paste();
    void Fill();
    void RandomFill();
    void Unread();
    void ClearSelection();
    void SelectWindow();  // BSelectWindow

  private:
    void afterMove();
    void resetPageText();
    [[nodiscard]] int32_t cellAddress(int index) const { return actPage * 16 + index; }
    [[nodiscard]] bool markingBetween(int32_t address) const;
    void closeWorkingPair(int32_t end);

    ProgramState& st_;
    HexPageView& view_;
};

}  // namespace vortelm::forms
