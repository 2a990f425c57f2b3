#include "Scrivly/screens/SettingsView.h"

#include "Scrivly/model/AppModel.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>

namespace scrivly {

SettingsView::SettingsView(AppModel& model, std::function<void()> checkForUpdates,
                           std::function<void()> openDatabase, QWidget* parent)
    : QWidget(parent, Qt::Window), m_model(model), m_name(new QLineEdit(this)),
      m_paper(new QComboBox(this)), m_cover(new QCheckBox(tr("Cover page"), this)),
      m_photos(new QCheckBox(tr("Photos in PDFs"), this)), m_contacts(new QPushButton(this)) {
    setWindowTitle(tr("Settings"));
    setObjectName(QStringLiteral("settings"));
    setMinimumWidth(500);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 18, 20, 18);
    layout->setSpacing(14);

    auto* start = new QGroupBox(tr("Getting started"), this);
    auto* startLayout = new QHBoxLayout(start);
    auto* welcome = new QPushButton(tr("Show the Welcome Screen Again"), start);
    startLayout->addWidget(welcome);
    startLayout->addStretch(1);
    layout->addWidget(start);

    auto* exports = new QGroupBox(tr("Exports"), this);
    auto* exportsForm = new QFormLayout(exports);
    exportsForm->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    m_name->setPlaceholderText(tr("Me"));
    m_name->setAccessibleName(tr("Your name in exports"));
    exportsForm->addRow(tr("Your name in exports"), m_name);
    m_paper->addItem(tr("US Letter"), static_cast<int>(PaperSize::letter));
    m_paper->addItem(tr("A4"), static_cast<int>(PaperSize::a4));
    m_paper->setAccessibleName(tr("Paper"));
    exportsForm->addRow(tr("Paper"), m_paper);
    exportsForm->addRow(QString(), m_cover);
    exportsForm->addRow(QString(), m_photos);
    layout->addWidget(exports);

    auto* access = new QGroupBox(tr("Access"), this);
    auto* accessForm = new QFormLayout(access);
    // Buttons keep their own width; stretched across the field they read as text boxes.
    accessForm->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
#ifdef Q_OS_MACOS
    Q_UNUSED(openDatabase)
    auto* history = new QPushButton(tr("Open Full Disk Access Settings"), access);
    connect(history, &QPushButton::clicked, &model, &AppModel::openFullDiskAccessSettings);
#else
    // Linux has no access switch to send people to; choosing the database file is what helps.
    auto* history = new QPushButton(tr("Open a Messages Database…"), access);
    connect(history, &QPushButton::clicked, this, std::move(openDatabase));
#endif
    accessForm->addRow(tr("Messages history"), history);
    accessForm->addRow(tr("Contacts"), m_contacts);
    auto* note = new QLabel(tr("Scrivly reads a temporary copy of your Messages history and "
                               "deletes it after each read. Nothing is uploaded."),
                            access);
    note->setWordWrap(true);
    note->setForegroundRole(QPalette::PlaceholderText);
    accessForm->addRow(note);
    layout->addWidget(access);
    // One label column across both sections, so their fields line up.
    int labelWidth = 0;
    for (QFormLayout* form : {exportsForm, accessForm}) {
        for (int row = 0; row < form->rowCount(); ++row) {
            if (QLayoutItem* item = form->itemAt(row, QFormLayout::LabelRole)) {
                labelWidth = std::max(labelWidth, item->sizeHint().width());
            }
        }
    }
    for (QFormLayout* form : {exportsForm, accessForm}) {
        for (int row = 0; row < form->rowCount(); ++row) {
            if (QLayoutItem* item = form->itemAt(row, QFormLayout::LabelRole)) {
                if (item->widget()) {
                    item->widget()->setMinimumWidth(labelWidth);
                }
            }
        }
    }

    auto* updates = new QHBoxLayout;
    auto* check = new QPushButton(tr("Check for Updates…"), this);
    updates->addWidget(check);
    updates->addStretch(1);
    layout->addLayout(updates);
    layout->addStretch(1);

    connect(welcome, &QPushButton::clicked, &model, &AppModel::showWelcome);
    connect(check, &QPushButton::clicked, this, std::move(checkForUpdates));
    connect(m_name, &QLineEdit::textEdited, this, [this](const QString& text) {
        m_model.changeSettings([&](AppSettings& settings) { settings.myName = text; });
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
    connect(m_contacts, &QPushButton::clicked, this, [this] {
        if (m_model.contacts() == AppModel::ContactsAccess::notAsked) {
            m_model.requestContacts();
        } else {
            m_model.openContactsSettings();
        }
    });
    connect(&model, &AppModel::settingsChanged, this, &SettingsView::updateSettings);
    connect(&model, &AppModel::contactsChanged, this, &SettingsView::updateContacts);
    connect(&model, &AppModel::databaseSourceChanged, this, &SettingsView::updateContacts);
    updateSettings();
    updateContacts();
}

void SettingsView::updateSettings() {
    const AppSettings& settings = m_model.settings();
    if (m_name->text() != settings.myName) {
        m_name->setText(settings.myName);
    }
    const QSignalBlocker blockPaper(m_paper);
    const QSignalBlocker blockCover(m_cover);
    const QSignalBlocker blockPhotos(m_photos);
    m_paper->setCurrentIndex(m_paper->findData(static_cast<int>(settings.paper)));
    m_cover->setChecked(settings.coverPage);
    m_photos->setChecked(settings.includeImages);
}

void SettingsView::updateContacts() {
    const bool notAsked = m_model.contacts() == AppModel::ContactsAccess::notAsked;
    m_contacts->setText(notAsked ? tr("Use Contacts for Names") : tr("Open Contacts Settings"));
#ifndef Q_OS_MACOS
    // Without a system pane for contacts, the button is offered only while it can still ask.
    m_contacts->setEnabled(notAsked || m_model.canChooseContacts());
#endif
}

} // namespace scrivly
