#include "Scrivly/screens/PreviewSheet.h"

#include "Scrivly/model/AppModel.h"
#include "Scrivly/screens/ExportSheet.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPdfDocument>
#include <QPdfPageNavigator>
#include <QPdfView>
#include <QPushButton>

namespace scrivly {

PreviewSheet::PreviewSheet(AppModel& model, QWidget* parent)
    : QDialog(parent), m_model(model), m_document(new QPdfDocument(this)),
      m_view(new QPdfView(this)) {
    setWindowTitle(tr("Preview"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 12);
    layout->setSpacing(10);

    m_view->setDocument(m_document);
    m_view->setPageMode(QPdfView::PageMode::MultiPage);
    m_view->setZoomMode(QPdfView::ZoomMode::FitToWidth);
    m_view->setPageSpacing(12);
    m_view->setDocumentMargins(QMargins(16, 16, 16, 16));
    m_view->setAccessibleName(tr("Preview"));
    m_view->setBackgroundRole(QPalette::Dark);
    m_view->setFocusPolicy(Qt::StrongFocus);
    layout->addWidget(m_view, 1);

    auto* saved = new SavedLine(model, this);
    auto* savedRow = new QHBoxLayout;
    savedRow->setContentsMargins(16, 0, 16, 0);
    savedRow->addWidget(saved);
    layout->addLayout(savedRow);

    auto* buttons = new QHBoxLayout;
    buttons->setContentsMargins(16, 0, 16, 0);
    auto* back = new QPushButton(tr("Back"), this);
    auto* pages = new QLabel(this);
    pages->setForegroundRole(QPalette::PlaceholderText);
    auto* exportPDF = new QPushButton(tr("Export PDF…"), this);
    exportPDF->setDefault(true);
    buttons->addWidget(back);
    buttons->addStretch(1);
    buttons->addWidget(pages);
    buttons->addStretch(1);
    buttons->addWidget(exportPDF);
    layout->addLayout(buttons);

    connect(back, &QPushButton::clicked, &model, &AppModel::showExport);
    connect(exportPDF, &QPushButton::clicked, &model, &AppModel::exportPDF);
    connect(m_document, &QPdfDocument::pageCountChanged, this, [pages](int count) {
        pages->setText(count == 1 ? tr("1 page") : tr("%1 pages").arg(count));
    });
    connect(&model, &AppModel::previewDataChanged, this, &PreviewSheet::updateDocument);
    updateDocument();
}

PreviewSheet::~PreviewSheet() {
    // The document reads from the buffer until it is closed.
    m_document->close();
}

void PreviewSheet::updateDocument() {
    m_document->close();
    m_buffer.close();
    m_buffer.setData(m_model.previewData().value_or(QByteArray()));
    if (m_buffer.size() > 0) {
        m_buffer.open(QIODevice::ReadOnly);
        m_document->load(&m_buffer);
        m_view->pageNavigator()->jump(0, {}, m_view->zoomFactor());
    }
}

} // namespace scrivly
