#include "Scrivly/screens/ExportSheet.h"

#include "Scrivly/model/AppModel.h"
#include "Scrivly/model/PlatformTexts.h"
#include "Scrivly/screens/Symbols.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSpinBox>

#include <limits>

namespace scrivly {

SavedLine::SavedLine(AppModel& model, QWidget* parent)
    : QWidget(parent), m_model(model), m_text(new QLabel(this)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    auto* icon = new QLabel(this);
    const int size = m_text->fontMetrics().height();
    icon->setPixmap(Symbols::icon(QStringLiteral("checkmark.circle.fill")).pixmap(size, size));
    layout->addWidget(icon);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(m_text, 1);
    auto* reveal = new QPushButton(PlatformTexts::showInFolder(), this);
    layout->addWidget(reveal);
    connect(reveal, &QPushButton::clicked, &model, &AppModel::showInFinder);
    connect(&model, &AppModel::lastExportChanged, this, &SavedLine::update);
    update();
}

void SavedLine::update() {
    const auto& saved = m_model.lastExport();
    setVisible(saved.has_value());
    if (saved) {
        const QString name = QFileInfo(*saved).fileName();
        m_text->setText(tr("Saved %1").arg(name));
        m_text->setToolTip(*saved);
    }
}

ExportSheet::ExportSheet(AppModel& model, QWidget* parent)
    : QDialog(parent), m_model(model), m_title(new QLineEdit(this)), m_header(new QLineEdit(this)),
      m_paper(new QComboBox(this)),
      m_cover(new QCheckBox(tr("Cover page with participants, dates and counts"), this)),
      m_photos(new QCheckBox(tr("Photos in the PDF"), this)), m_prefix(new QLineEdit(this)),
      m_startLabel(new QLabel(tr("First number"), this)), m_start(new QSpinBox(this)),
      m_progressRow(new QWidget(this)), m_progress(new QProgressBar(this)),
      m_cancel(new QPushButton(tr("Cancel"), this)), m_close(new QPushButton(tr("Close"), this)),
      m_preview(new QPushButton(tr("Preview"), this)),
      m_exportCSV(new QPushButton(tr("Export CSV…"), this)),
      m_exportPDF(new QPushButton(tr("Export PDF…"), this)) {
    setWindowTitle(tr("Export"));
    setMinimumWidth(520);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 18, 20, 16);
    layout->setSpacing(14);

    auto* document = new QGroupBox(tr("Document"), this);
    auto* documentForm = new QFormLayout(document);
    documentForm->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    m_title->setPlaceholderText(tr("Messages with…"));
    m_header->setPlaceholderText(tr("Optional, e.g. a case name"));
    m_paper->addItem(tr("US Letter"), static_cast<int>(PaperSize::letter));
    m_paper->addItem(tr("A4"), static_cast<int>(PaperSize::a4));
    documentForm->addRow(tr("Title"), m_title);
    documentForm->addRow(tr("Header on every page"), m_header);
    documentForm->addRow(tr("Paper"), m_paper);
    documentForm->addRow(QString(), m_cover);
    documentForm->addRow(QString(), m_photos);
    layout->addWidget(document);

    auto* numbers = new QGroupBox(tr("Page numbers"), this);
    auto* numbersForm = new QFormLayout(numbers);
    numbersForm->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    auto* note = new QLabel(tr("Every page shows “Page 1 of 12”. Add a prefix to also number "
                               "pages Bates-style at the bottom right."),
                            numbers);
    note->setWordWrap(true);
    note->setForegroundRole(QPalette::PlaceholderText);
    numbersForm->addRow(note);
    m_prefix->setPlaceholderText(tr("Optional, e.g. SMITH-"));
    numbersForm->addRow(tr("Number prefix"), m_prefix);
    m_start->setRange(0, std::numeric_limits<int>::max());
    m_start->setAccessibleName(tr("First number"));
    numbersForm->addRow(m_startLabel, m_start);
    layout->addWidget(numbers);

    // Accessible names follow the visible labels of the form.
    m_title->setAccessibleName(tr("Title"));
    m_header->setAccessibleName(tr("Header on every page"));
    m_paper->setAccessibleName(tr("Paper"));
    m_prefix->setAccessibleName(tr("Number prefix"));

    auto* progressLayout = new QHBoxLayout(m_progressRow);
    progressLayout->setContentsMargins(0, 0, 0, 0);
    progressLayout->addWidget(new QLabel(tr("Making the PDF…"), m_progressRow));
    m_progress->setParent(m_progressRow);
    m_progress->setRange(0, 1000);
    m_progress->setTextVisible(false);
    m_progress->setAccessibleName(tr("Making the PDF…"));
    progressLayout->addWidget(m_progress, 1);
    m_cancel->setParent(m_progressRow);
    progressLayout->addWidget(m_cancel);
    layout->addWidget(m_progressRow);
    layout->addWidget(new SavedLine(model, this));

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    buttons->addWidget(m_close);
    buttons->addStretch(1);
    buttons->addWidget(m_preview);
    buttons->addWidget(m_exportCSV);
    buttons->addWidget(m_exportPDF);
    m_exportPDF->setDefault(true);
    layout->addLayout(buttons);

    connect(m_title, &QLineEdit::textEdited, this, [this](const QString& text) {
        m_model.changeForm([&](ExportForm& form) { form.title = text; });
    });
    connect(m_header, &QLineEdit::textEdited, this, [this](const QString& text) {
        m_model.changeForm([&](ExportForm& form) { form.header = text; });
    });
    connect(m_prefix, &QLineEdit::textEdited, this, [this](const QString& text) {
        m_model.changeForm([&](ExportForm& form) { form.batesPrefix = text; });
    });
    connect(m_start, &QSpinBox::valueChanged, this, [this](int value) {
        m_model.changeForm([&](ExportForm& form) { form.batesStart = value; });
    });
    connect(m_paper, &QComboBox::activated, this, [this](int row) {
        m_model.changeSettings([&](AppSettings& settings) {
            settings.paper = static_cast<PaperSize>(m_paper->itemData(row).toInt());
        });
    });
    connect(m_cover, &QCheckBox::toggled, this, [this](bool on) {
        m_model.changeSettings([&](AppSettings& settings) { settings.coverPage = on; });
    });
    connect(m_photos, &QCheckBox::toggled, this, [this](bool on) {
        m_model.changeSettings([&](AppSettings& settings) { settings.includeImages = on; });
    });
    connect(m_close, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_preview, &QPushButton::clicked, &model, &AppModel::showPreview);
    connect(m_exportCSV, &QPushButton::clicked, &model, &AppModel::exportCSV);
    connect(m_exportPDF, &QPushButton::clicked, &model, &AppModel::exportPDF);
    connect(m_cancel, &QPushButton::clicked, &model, &AppModel::cancelRender);

    connect(&model, &AppModel::formChanged, this, &ExportSheet::updateForm);
    connect(&model, &AppModel::settingsChanged, this, &ExportSheet::updateSettings);
    connect(&model, &AppModel::exportingChanged, this, &ExportSheet::updateExporting);
    connect(&model, &AppModel::renderProgressChanged, this, &ExportSheet::updateExporting);
    updateForm();
    updateSettings();
    updateExporting();
}

void ExportSheet::updateForm() {
    const ExportForm& form = m_model.form();
    // Only differences are written back, so typing keeps its cursor.
    for (auto [field, text] : {std::pair{m_title, form.title}, std::pair{m_header, form.header},
                               std::pair{m_prefix, form.batesPrefix}}) {
        if (field->text() != text) {
            field->setText(text);
        }
    }
    if (m_start->value() != form.batesStart) {
        const QSignalBlocker block(m_start);
        m_start->setValue(static_cast<int>(form.batesStart));
    }
    const bool numbered = !form.batesPrefix.trimmed().isEmpty();
    m_startLabel->setVisible(numbered);
    m_start->setVisible(numbered);
}

void ExportSheet::updateSettings() {
    const AppSettings& settings = m_model.settings();
    const QSignalBlocker blockPaper(m_paper);
    const QSignalBlocker blockCover(m_cover);
    const QSignalBlocker blockPhotos(m_photos);
    m_paper->setCurrentIndex(m_paper->findData(static_cast<int>(settings.paper)));
    m_cover->setChecked(settings.coverPage);
    m_photos->setChecked(settings.includeImages);
}

void ExportSheet::updateExporting() {
    const bool exporting = m_model.exporting();
    m_progressRow->setVisible(exporting);
    m_progress->setValue(static_cast<int>(m_model.renderProgress().value_or(0.0) * 1000.0));
    for (QPushButton* button : {m_preview, m_exportCSV, m_exportPDF}) {
        button->setEnabled(!exporting);
    }
    if (exporting) {
        m_cancel->setFocus(Qt::OtherFocusReason);
    }
}

} // namespace scrivly
