#pragma once
// The configuration dialogs drawn: the target configuration (FConfigure),
// a memory unit (FMemory) and its region, activate register and feature
// forms. Each draws its forms/ class and forwards the events; every check,
// question and store is the class's.

#include <QDialog>
#include <QGroupBox>
#include <QLayout>

#include <array>
#include <functional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "forms/FConfigure.h"
#include "forms/FMemory.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QListWidget;

namespace vortelm::ui {

class FMemory : public QDialog {
    Q_OBJECT
  public:
    FMemory(ProgramState& st, int unit, QWidget* parent = nullptr);
    [[nodiscard]] forms::FMemory& logic() { return logic_; }
    void RefreshAll();
    void BOk_Click();
    void BAddRegion_Click();
    void BAddActivate_Click();
    void BAddFeature_Click();

  private:
    void take();
    bool AddThroughForm(const char* name, const char* title,
                        std::span<const std::pair<const char*, const char*>> fields,
                        const std::function<std::string(const std::vector<std::string>&)>& add);
    forms::FMemory logic_;
    ProgramState& st_;
    QLineEdit* name_ = nullptr;
    QComboBox* type_ = nullptr;
    QLineEdit* blank_ = nullptr;
    QLineEdit* burst_ = nullptr;
    QLineEdit* driver_ = nullptr;
    QComboBox* mode_ = nullptr;
    QListWidget* activate_ = nullptr;
    QListWidget* sections_ = nullptr;
    QListWidget* features_ = nullptr;
};

class FConfigure : public QDialog {
    Q_OBJECT
  public:
    FConfigure(ProgramState& st, QWidget* parent = nullptr);
    [[nodiscard]] forms::FConfigure& logic() { return logic_; }

    // Fills every control from the logic.
    void show_all();
    void BOk_Click();
    void BMemoryAdd_Click();
    void BMemoryEdit_Click();
    void BMemoryRemove_Click();

  signals:
    void stored();

  private:
    QLayout* memoryLists();
    QGroupBox* registerGrid();
    void take();
    void showMemoryLists();
    forms::FConfigure logic_;
    ProgramState& st_;
    QComboBox* type_ = nullptr;
    QLineEdit* clock_ = nullptr;
    QListWidget* memory_ = nullptr;
    QListWidget* activated_ = nullptr;
    QListWidget* mapped_ = nullptr;
    std::array<QCheckBox*, forms::kInitRows> marks_{};
    std::array<QComboBox*, forms::kInitRows> names_{};
    std::array<QLineEdit*, forms::kInitRows> values_{};
    std::array<QCheckBox*, forms::kGenericRows> genericMarks_{};
    std::array<QLineEdit*, forms::kGenericRows> genericAddresses_{};
    std::array<QLineEdit*, forms::kGenericRows> genericData_{};
    QCheckBox* einit_ = nullptr;
    bool loading_ = false;
};

}  // namespace vortelm::ui
