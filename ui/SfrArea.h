#pragma once
// The SFR area of the main window: the tab strip XSFRReg of the eight sets,
// the register list ISfr and the buttons BAdd, BRemove, BChange and
// BRefresh. It draws the list the program state holds and forwards every
// event to forms::SfrArea; values that changed at the last refresh are shown
// in a colour of their own.

#include <QWidget>

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "forms/SfrArea.h"

class QListWidget;
class QTabBar;

namespace vortelm::ui {

class QtHost;

class SfrArea : public QWidget {
    Q_OBJECT
  public:
    SfrArea(ProgramState& st, link::ComPort* port, QtHost& host, QWidget* parent = nullptr);

    // RefreshSfrView: reads the values and draws them. Put off while an
    // exchange or a transfer runs, and done when the next drawing comes.
    void refresh();
    // Draws the list when the state's list changed since the last drawing.
    void draw(bool force = false);

    // The buttons' work.
    void openPicker();
    void openChange();
    void removeSelected();

    [[nodiscard]] forms::SfrArea& logic() { return logic_; }
    [[nodiscard]] QListWidget* list() const { return list_; }

  private:
    friend class SfrList;
    void guarded(const std::function<void()>& work);
    void takeSelection();
    bool key(int key, Qt::KeyboardModifiers modifiers);

    ProgramState& st_;
    link::ComPort* port_;
    QtHost& host_;
    forms::SfrArea logic_;
    QTabBar* tabs_ = nullptr;
    QListWidget* list_ = nullptr;
    uint64_t drawn_ = ~uint64_t{0};
    std::set<size_t> changed_;  // lines whose value changed at the last refresh
    bool drawing_ = false;
};

}  // namespace vortelm::ui
