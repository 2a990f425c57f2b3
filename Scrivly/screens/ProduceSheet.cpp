#include "Scrivly/screens/ProduceSheet.h"

#include "Scrivly/model/AppModel.h"
#include "Scrivly/model/PlatformTexts.h"
#include "Scrivly/screens/Symbols.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QDate>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <QSpinBox>
#include <QStandardPaths>
#include <QStyle>

#include <limits>

namespace scrivly {

namespace {

// How many titles the sheet names before it only counts.
constexpr int kNamedTitles = 3;

QString dayText(DayBounds::Day day) {
    return QLocale().toString(QDate(day.year, day.month, day.day), QLocale::ShortFormat);
}

QLabel* wrapped(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    return label;
}

} // namespace

QString ProduceSheet::suggestedFolder() {
    QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (documents.isEmpty()) {
        documents = QDir::homePath();
    }
    const QString base = documents + QLatin1Char('/') + tr("Production");
    QString folder = base;
    for (int number = 2; QFileInfo::exists(folder) &&
                         !QDir(folder).isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot |
                                               QDir::Hidden | QDir::System);
         ++number) {
        folder = base + QLatin1Char(' ') + QString::number(number);
    }
    return QDir::toNativeSeparators(folder);
}

ProduceSheet::ProduceSheet(AppModel& model, QWidget* parent)
    : QDialog(parent), m_model(model), m_conversations(new QLabel(this)), m_dates(new QLabel(this)),
      m_prefix(new QLineEdit(this)), m_start(new QSpinBox(this)),
      m_perDay(new QCheckBox(tr("One document per day"), this)),
      m_split(new QCheckBox(tr("Split files larger than"), this)), m_splitSize(new QSpinBox(this)),
      m_natives(new QCheckBox(tr("Include original attachments"), this)),
      m_spreadsheets(new QCheckBox(tr("Include spreadsheets"), this)),
      m_loadFile(new QCheckBox(tr("Include a load file for review platforms"), this)),
      m_custodian(new QLineEdit(this)), m_folder(new QLineEdit(this)),
      m_choose(new QPushButton(tr("Choose…"), this)), m_form(new QWidget(this)),
      m_problem(new QLabel(this)), m_progressRow(new QWidget(this)),
      m_progressText(new QLabel(this)), m_progress(new QProgressBar(this)),
      m_cancel(new QPushButton(tr("Cancel"), this)), m_doneRow(new QWidget(this)),
      m_done(new QLabel(this)), m_close(new QPushButton(tr("Close"), this)),
      m_produce(new QPushButton(tr("Produce"), this)) {
    setWindowTitle(tr("Produce"));
    setMinimumWidth(640);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 16, 20, 14);
    layout->setSpacing(10);

    auto* intro = wrapped(tr("A production is one folder of PDFs numbered without a gap from "
                             "first page to last, with a certificate listing every file, as "
                             "courts and lawyers ask for."),
                          this);
    layout->addWidget(intro);

    auto* fields = new QVBoxLayout(m_form);
    fields->setContentsMargins(0, 0, 0, 0);
    fields->setSpacing(10);
    auto* what = new QFormLayout;
    what->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    m_conversations->setWordWrap(true);
    what->addRow(tr("Conversations"), m_conversations);
    what->addRow(tr("Dates"), m_dates);
    auto* same = wrapped(
        tr("Header, paper, cover pages and photos are those of Export (%1).")
            .arg(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E).toString(QKeySequence::NativeText)),
        m_form);
    same->setForegroundRole(QPalette::PlaceholderText);
    what->addRow(same);
    auto* numbersRow = new QHBoxLayout;
    m_prefix->setPlaceholderText(tr("For example SMITH-"));
    numbersRow->addWidget(m_prefix, 1);
    numbersRow->addSpacing(12);
    numbersRow->addWidget(new QLabel(tr("First number"), m_form));
    m_start->setRange(0, std::numeric_limits<int>::max());
    m_start->setMinimumWidth(110);
    numbersRow->addWidget(m_start);
    what->addRow(tr("Number prefix"), numbersRow);
    fields->addLayout(what);

    // What makes up the production: how documents are cut on the left, what goes with them on
    // the right.
    auto* documents = new QGroupBox(tr("Documents"), m_form);
    auto* grid = new QGridLayout(documents);
    grid->setHorizontalSpacing(18);
    grid->addWidget(m_perDay, 0, 0);
    auto* splitRow = new QHBoxLayout;
    splitRow->addWidget(m_split);
    m_splitSize->setRange(1, 100000);
    m_splitSize->setSuffix(tr(" MB"));
    m_splitSize->setAccessibleName(tr("Split files larger than"));
    splitRow->addWidget(m_splitSize);
    splitRow->addStretch(1);
    grid->addLayout(splitRow, 1, 0);
    grid->addWidget(m_natives, 0, 1);
    grid->addWidget(m_spreadsheets, 1, 1);
    grid->addWidget(m_loadFile, 2, 1);
    auto* custodianRow = new QHBoxLayout;
    // Under the load file's own words, which it belongs to.
    custodianRow->addSpacing(m_loadFile->style()->pixelMetric(QStyle::PM_IndicatorWidth) + 4);
    custodianRow->addWidget(new QLabel(tr("Custodian"), documents));
    custodianRow->addSpacing(6);
    m_custodian->setPlaceholderText(QString::fromStdString(m_model.exportStrings().me));
    custodianRow->addWidget(m_custodian, 1);
    grid->addLayout(custodianRow, 3, 1);
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(1, 1);
    fields->addWidget(documents);

    auto* where = new QFormLayout;
    where->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    auto* folderRow = new QHBoxLayout;
    folderRow->addWidget(m_folder, 1);
    folderRow->addWidget(m_choose);
    where->addRow(tr("Folder"), folderRow);
    fields->addLayout(where);
    layout->addWidget(m_form);

    m_prefix->setAccessibleName(tr("Number prefix"));
    m_start->setAccessibleName(tr("First number"));
    m_custodian->setAccessibleName(tr("Custodian"));
    m_folder->setAccessibleName(tr("Folder"));

    m_problem->setWordWrap(true);
    m_problem->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QPalette warning = m_problem->palette();
    warning.setColor(QPalette::WindowText, QColor(0xc0, 0x27, 0x1e));
    m_problem->setPalette(warning);
    layout->addWidget(m_problem);

    auto* progressLayout = new QHBoxLayout(m_progressRow);
    progressLayout->setContentsMargins(0, 0, 0, 0);
    m_progressText->setParent(m_progressRow);
    progressLayout->addWidget(m_progressText);
    m_progress->setParent(m_progressRow);
    m_progress->setRange(0, 1000);
    m_progress->setTextVisible(false);
    m_progress->setAccessibleName(tr("Producing…"));
    progressLayout->addWidget(m_progress, 1);
    m_cancel->setParent(m_progressRow);
    progressLayout->addWidget(m_cancel);
    layout->addWidget(m_progressRow);

    auto* doneLayout = new QHBoxLayout(m_doneRow);
    doneLayout->setContentsMargins(0, 0, 0, 0);
    doneLayout->setSpacing(8);
    auto* check = new QLabel(m_doneRow);
    const int size = m_done->fontMetrics().height();
    check->setPixmap(Symbols::icon(QStringLiteral("checkmark.circle.fill")).pixmap(size, size));
    doneLayout->addWidget(check);
    m_done->setParent(m_doneRow);
    m_done->setWordWrap(true);
    m_done->setTextInteractionFlags(Qt::TextSelectableByMouse);
    doneLayout->addWidget(m_done, 1);
    auto* reveal = new QPushButton(PlatformTexts::showInFolder(), m_doneRow);
    doneLayout->addWidget(reveal);
    layout->addWidget(m_doneRow);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    buttons->addWidget(m_close);
    buttons->addStretch(1);
    buttons->addWidget(m_produce);
    m_produce->setDefault(true);
    layout->addLayout(buttons);

    // A new production starts from the export's prefix and a fresh folder.
    ProduceFlow& flow = m_model.production();
    ProduceForm initial = flow.form();
    if (initial.batesPrefix.trimmed().isEmpty()) {
        initial.batesPrefix = m_model.form().batesPrefix.trimmed();
        initial.batesStart = m_model.form().batesStart;
    }
    if (initial.folder.trimmed().isEmpty() ||
        (QFileInfo(initial.folder).isDir() && !QDir(initial.folder).isEmpty())) {
        initial.folder = suggestedFolder();
    }
    flow.setForm(initial);

    connect(m_prefix, &QLineEdit::textEdited, this, [this](const QString& text) {
        change([&](ProduceForm& form) { form.batesPrefix = text; });
    });
    connect(m_start, &QSpinBox::valueChanged, this,
            [this](int value) { change([&](ProduceForm& form) { form.batesStart = value; }); });
    connect(m_perDay, &QCheckBox::toggled, this,
            [this](bool on) { change([&](ProduceForm& form) { form.perDay = on; }); });
    connect(m_split, &QCheckBox::toggled, this,
            [this](bool on) { change([&](ProduceForm& form) { form.split = on; }); });
    connect(m_splitSize, &QSpinBox::valueChanged, this,
            [this](int value) { change([&](ProduceForm& form) { form.splitMegabytes = value; }); });
    connect(m_natives, &QCheckBox::toggled, this,
            [this](bool on) { change([&](ProduceForm& form) { form.natives = on; }); });
    connect(m_spreadsheets, &QCheckBox::toggled, this,
            [this](bool on) { change([&](ProduceForm& form) { form.spreadsheets = on; }); });
    connect(m_loadFile, &QCheckBox::toggled, this,
            [this](bool on) { change([&](ProduceForm& form) { form.loadFile = on; }); });
    connect(m_custodian, &QLineEdit::textEdited, this, [this](const QString& text) {
        change([&](ProduceForm& form) { form.custodian = text; });
    });
    connect(m_folder, &QLineEdit::textEdited, this, [this](const QString& text) {
        change([&](ProduceForm& form) { form.folder = text; });
    });
    connect(m_choose, &QPushButton::clicked, this, &ProduceSheet::chooseFolder);
    connect(m_close, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_produce, &QPushButton::clicked, &model, &AppModel::produce);
    connect(m_cancel, &QPushButton::clicked, &flow, &ProduceFlow::cancel);
    connect(reveal, &QPushButton::clicked, &flow, &ProduceFlow::showInFolder);

    connect(&flow, &ProduceFlow::formChanged, this, &ProduceSheet::updateForm);
    connect(&flow, &ProduceFlow::stateChanged, this, &ProduceSheet::updateState);
    connect(&model, &AppModel::chosenChanged, this, &ProduceSheet::updateSubject);
    connect(&model, &AppModel::conversationsChanged, this, &ProduceSheet::updateSubject);
    updateForm();
    updateState();
    updateSubject();
}

void ProduceSheet::change(const std::function<void(ProduceForm&)>& edit) {
    ProduceForm form = m_model.production().form();
    edit(form);
    m_model.production().setForm(form);
}

void ProduceSheet::chooseFolder() {
    // The dialog can make a new folder; a production goes into a new or empty one.
    const QString folder = QFileDialog::getExistingDirectory(
        this, tr("Choose a New or Empty Folder for the Production"), m_folder->text());
    if (!folder.isEmpty()) {
        change([&](ProduceForm& form) { form.folder = QDir::toNativeSeparators(folder); });
    }
}

void ProduceSheet::updateForm() {
    const ProduceForm& form = m_model.production().form();
    // Only differences are written back, so typing keeps its cursor.
    for (auto [field, text] :
         {std::pair{m_prefix, form.batesPrefix}, std::pair{m_custodian, form.custodian},
          std::pair{m_folder, form.folder}}) {
        if (field->text() != text) {
            field->setText(text);
        }
    }
    const QSignalBlocker blockStart(m_start);
    const QSignalBlocker blockSize(m_splitSize);
    m_start->setValue(static_cast<int>(form.batesStart));
    m_splitSize->setValue(form.splitMegabytes);
    m_splitSize->setEnabled(form.split);
    m_custodian->setEnabled(form.loadFile);
    for (auto [box, on] :
         {std::pair{m_perDay, form.perDay}, std::pair{m_split, form.split},
          std::pair{m_natives, form.natives}, std::pair{m_spreadsheets, form.spreadsheets},
          std::pair{m_loadFile, form.loadFile}}) {
        const QSignalBlocker block(box);
        box->setChecked(on);
    }
}

void ProduceSheet::updateState() {
    const ProduceFlow& flow = m_model.production();
    const bool producing = flow.producing();
    m_form->setEnabled(!producing);
    m_produce->setEnabled(!producing);
    m_progressRow->setVisible(producing);
    m_progressText->setText(flow.cancelling() ? tr("Cancelling…") : tr("Producing…"));
    m_progress->setValue(static_cast<int>(flow.progress().value_or(0.0) * 1000.0));
    m_cancel->setEnabled(!flow.cancelling());
    m_problem->setVisible(flow.problem().has_value());
    m_problem->setText(flow.problem().value_or(QString()));
    m_doneRow->setVisible(flow.finished().has_value());
    m_done->setText(flow.finished().value_or(QString()));
    m_done->setToolTip(flow.producedFolder().value_or(QString()));
    if (producing && !flow.cancelling()) {
        m_cancel->setFocus(Qt::OtherFocusReason);
    }
}

void ProduceSheet::updateSubject() {
    const auto conversations = m_model.productionConversations();
    const auto count = static_cast<qsizetype>(conversations.size());
    QStringList titles;
    for (qsizetype index = 0; index < std::min<qsizetype>(count, kNamedTitles); ++index) {
        titles.append(QString::fromStdString(conversations[index].title));
    }
    const QString locale = QLocale().toString(count);
    if (count == 1) {
        m_conversations->setText(titles.front());
    } else if (m_model.chosen().empty()) {
        m_conversations->setText(tr("All %1 conversations").arg(locale));
    } else if (count <= kNamedTitles) {
        m_conversations->setText(tr("%1 selected: %2").arg(locale, titles.join(tr(", "))));
    } else {
        m_conversations->setText(
            tr("%1 selected: %2 and %3 more")
                .arg(locale, titles.join(tr(", ")), QLocale().toString(count - kNamedTitles)));
    }

    const bool from = m_model.useFrom();
    const bool to = m_model.useTo();
    if (from && to) {
        m_dates->setText(tr("%1 to %2").arg(dayText(m_model.fromDay()), dayText(m_model.toDay())));
    } else if (from) {
        m_dates->setText(tr("From %1").arg(dayText(m_model.fromDay())));
    } else if (to) {
        m_dates->setText(tr("Until %1").arg(dayText(m_model.toDay())));
    } else {
        m_dates->setText(tr("All messages"));
    }
}

} // namespace scrivly
