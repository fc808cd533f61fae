#include "ui/FSFRChange.h"

#include <QEvent>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <cmath>
#include <functional>

#include "core/RunTimeError.h"
#include "core/Text.h"
#include "ui/Colours.h"
#include "ui/Scaling.h"

namespace vortelm::ui {

namespace {

// The form's units are twips: fifteen to a pixel at the designed size. The
// sizes set when the form is made grow with it (ScaleNewForm); the boxes
// placed later take the present scale here.
int Px(int units) {
    return units / 15;
}

int ScaledPx(int units) {
    return static_cast<int>(std::lround(units / 15.0 * AppliedScale()));
}

}  // namespace

FSFRChange::FSFRChange(ProgramState& st, link::ComPort* port, QWidget* parent)
    : QDialog(parent), logic_(st, port), st_(st) {
    setObjectName(QStringLiteral("FSFRChange"));
    setWindowTitle(QStringLiteral("SFR - Change"));
    const QFont mono = QFontDatabase::systemFont(QFontDatabase::FixedFont);

    name_ = new QLabel;
    name_->setObjectName(QStringLiteral("LSfrName"));
    // Only the weight: the size follows the application's (scaled) font.
    QFont bold;
    bold.setBold(true);
    name_->setFont(bold);
    value_ = new QLineEdit;
    value_->setObjectName(QStringLiteral("TValue"));
    value_->setFont(mono);
    value_->setFixedWidth(QFontMetrics(mono).horizontalAdvance(QStringLiteral("000000")) + 12);
    connect(value_, &QLineEdit::textEdited, this, [this](const QString& t) {
        guarded([&]() { logic_.TValue_Change(t.toStdString()); });
        draw();
    });

    bits_ = new QWidget;
    bits_->setObjectName(QStringLiteral("XBits"));
    bits_->setFixedSize(Px(forms::FSFRChange::kFormWidth), Px(forms::FSFRChange::kBoxHeight) + 4);
    for (int i = 0; i < 16; ++i) {
        auto* b = new QLineEdit(bits_);
        b->setObjectName(QStringLiteral("TBitValue%1").arg(i));
        b->setFont(mono);
        b->setAlignment(Qt::AlignCenter);
        b->setAutoFillBackground(true);
        b->installEventFilter(this);
        connect(b, &QLineEdit::textEdited, this, [this, i](const QString& t) {
            guarded([&]() { logic_.TBitValue_Change(i, t.toStdString()); });
            draw();
        });
        boxes_[static_cast<size_t>(i)] = b;
    }

    auto* ok = new QPushButton(QStringLiteral("OK"));
    ok->setObjectName(QStringLiteral("BOk"));
    ok->setAutoDefault(false);
    auto* cancel = new QPushButton(QStringLiteral("Cancel"));
    cancel->setObjectName(QStringLiteral("BCancel"));
    cancel->setAutoDefault(false);
    connect(ok, &QPushButton::clicked, this, [this]() {
        guarded([&]() { logic_.BOk_Click(); });
        if (!logic_.visible) accept();
    });
    connect(cancel, &QPushButton::clicked, this, [this]() {
        logic_.BCancel_Click();
        reject();
    });

    auto* top = new QHBoxLayout;
    top->addWidget(name_);
    top->addStretch(1);
    top->addWidget(new QLabel(QStringLiteral("Value:")));
    top->addWidget(value_);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto* lay = new QVBoxLayout(this);
    lay->addLayout(top);
    lay->addWidget(bits_);
    lay->addLayout(buttons);
    ScaleNewForm(this);
}

void FSFRChange::guarded(const std::function<void()>& work) {
    try {
        work();
    } catch (const RunTimeError& e) {
        Text2Buffer(st_, std::string("\r\n*ERROR: ") + e.what());
    }
}

void FSFRChange::method0(int32_t index) {
    guarded([&]() { logic_.method0(index); });
    draw();
}

void FSFRChange::draw() {
    name_->setText(QString::fromStdString(logic_.sfrName));
    const QString v = QString::fromStdString(logic_.valueText);
    if (value_->text() != v) value_->setText(v);
    for (int i = 0; i < 16; ++i) {
        const auto& m = logic_.boxes[static_cast<size_t>(i)];
        QLineEdit* b = boxes_[static_cast<size_t>(i)];
        b->setVisible(m.visible);
        if (!m.visible) continue;
        b->setGeometry(ScaledPx(m.left), ScaledPx(30), ScaledPx(m.width),
                       ScaledPx(forms::FSFRChange::kBoxHeight));
        b->setEnabled(m.enabled);
        QPalette p = b->palette();
        p.setColor(QPalette::Base, ColourFromKey(static_cast<int32_t>(m.background)));
        p.setColor(QPalette::Window, ColourFromKey(static_cast<int32_t>(m.background)));
        b->setPalette(p);
        b->setToolTip(QString::fromStdString(m.toolTip));
        const QString t = QString::fromStdString(m.text);
        if (b->text() != t) b->setText(t);
    }
}

bool FSFRChange::eventFilter(QObject* watched, QEvent* event) {
    for (int i = 0; i < 16; ++i) {
        if (watched != boxes_[static_cast<size_t>(i)]) continue;
        if (event->type() == QEvent::FocusOut) {
            guarded([&]() { logic_.TBitValue_LostFocus(i); });
            draw();
        } else if (event->type() == QEvent::MouseButtonDblClick) {
            guarded([&]() { logic_.TBitValue_DblClick(i); });
            draw();
            return true;
        }
        break;
    }
    return QDialog::eventFilter(watched, event);
}

}  // namespace vortelm::ui
