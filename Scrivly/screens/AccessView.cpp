#include "Scrivly/screens/AccessView.h"

#include "Scrivly/model/AppModel.h"
#include "Scrivly/model/PlatformTexts.h"
#include "Scrivly/screens/Symbols.h"

#include <QFrame>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include <functional>
#include <vector>

namespace scrivly {

namespace {

QLabel* wrappedLabel(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

AccessView::AccessView(AppModel& model, QWidget* parent) : QWidget(parent) {
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    auto* scroll = new QScrollArea(this);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    outer->addWidget(scroll);

    auto* page = new QWidget(scroll);
    scroll->setWidget(page);
    auto* centering = new QHBoxLayout(page);
    auto* column = new QWidget(page);
    column->setMaximumWidth(620);
    centering->addStretch(1);
    centering->addWidget(column, 4);
    centering->addStretch(1);

    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 36, 0, 36);
    layout->setSpacing(14);

    auto* title = wrappedLabel(tr("Let Scrivly read your Messages history"), column);
    QFont titleFont = title->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.6);
    titleFont.setBold(true);
    title->setFont(titleFont);
    layout->addWidget(title);
    auto* intro = wrappedLabel(PlatformTexts::accessIntro(), column);
    layout->addWidget(intro);

    struct Step {
        QString heading;
        QString text;
        QString button;
        std::function<void()> action;
    };
    // Full Disk Access exists only on macOS; elsewhere the file's own permissions are in the way,
    // and nothing tells Scrivly when they change.
#ifdef Q_OS_MACOS
    const bool fullDiskAccess = true;
#else
    const bool fullDiskAccess = false;
#endif
    std::vector<Step> steps;
    if (!fullDiskAccess) {
        auto* again = new QPushButton(tr("Check Again"), column);
        connect(again, &QPushButton::clicked, &model, &AppModel::reload);
        layout->addWidget(again, 0, Qt::AlignLeft);
    } else {
        steps = {
            {tr("Open Full Disk Access in System Settings"),
             tr("It’s in System Settings › Privacy & Security › Full Disk Access."),
             tr("Open Full Disk Access Settings"),
             [&model] { model.openFullDiskAccessSettings(); }},
            {tr("Turn on Scrivly"),
             tr("Find Scrivly in the list and turn its switch on. If it isn’t listed, click + and "
                "choose Scrivly, or drag it into the list from Finder."),
             tr("Show Scrivly in Finder"), [&model] { model.revealApplication(); }},
            {tr("Come back here"),
             tr("Scrivly checks again by itself when you return. If macOS offers to quit and "
                "reopen Scrivly, choose Quit & Reopen."),
             QString(),
             {}},
        };
    }
    int number = 1;
    for (const Step& step : steps) {
        auto* box = new QFrame(column);
        box->setFrameShape(QFrame::StyledPanel);
        box->setAccessibleName(tr("Step %1").arg(number));
        auto* grid = new QGridLayout(box);
        grid->setContentsMargins(16, 12, 16, 14);
        grid->setHorizontalSpacing(14);
        grid->setVerticalSpacing(4);
        auto* stepLabel = new QLabel(tr("Step %1").arg(number), box);
        stepLabel->setForegroundRole(QPalette::PlaceholderText);
        QFont small = stepLabel->font();
        small.setPointSizeF(small.pointSizeF() * 0.9);
        small.setBold(true);
        stepLabel->setFont(small);
        grid->addWidget(stepLabel, 0, 0);
        auto* heading = wrappedLabel(step.heading, box);
        QFont bold = heading->font();
        bold.setBold(true);
        heading->setFont(bold);
        grid->addWidget(heading, 1, 0);
        grid->addWidget(wrappedLabel(step.text, box), 2, 0);
        if (!step.button.isEmpty()) {
            auto* button = new QPushButton(step.button, box);
            connect(button, &QPushButton::clicked, this, step.action);
            grid->addWidget(button, 3, 0, Qt::AlignLeft);
            grid->setRowMinimumHeight(3, button->sizeHint().height() + 6);
        }
        layout->addWidget(box);
        ++number;
    }

    layout->addSpacing(6);
    QStringList reassurances{
        tr("Scrivly reads a copy of the Messages database and never changes, moves or deletes "
           "your messages."),
        PlatformTexts::accessPrivacy(),
    };
    if (fullDiskAccess) {
        reassurances.append(tr("You can turn access off again any time in the same place."));
    }
    const int iconSize = title->fontMetrics().height();
    for (const QString& text : reassurances) {
        auto* row = new QHBoxLayout;
        row->setSpacing(10);
        auto* icon = new QLabel(column);
        icon->setPixmap(Symbols::icon(QStringLiteral("lock.shield")).pixmap(iconSize, iconSize));
        icon->setAlignment(Qt::AlignTop);
        row->addWidget(icon, 0, Qt::AlignTop);
        auto* label = wrappedLabel(text, column);
        label->setForegroundRole(QPalette::PlaceholderText);
        row->addWidget(label, 1);
        layout->addLayout(row);
    }
    layout->addStretch(1);
}

} // namespace scrivly
