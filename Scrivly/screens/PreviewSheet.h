#pragma once

#include <QBuffer>
#include <QDialog>

class QPdfDocument;
class QPdfView;
class QPushButton;

namespace scrivly {

class AppModel;

// The preview sheet: the PDF that would be saved, page by page, with "Back" to the export sheet
// and "Export PDF…".
class PreviewSheet : public QDialog {
    Q_OBJECT

public:
    PreviewSheet(AppModel& model, QWidget* parent);
    ~PreviewSheet() override;

    QPdfDocument* document() const { return m_document; }
    QPdfView* view() const { return m_view; }

private:
    void updateDocument();

    AppModel& m_model;
    QBuffer m_buffer; // the bytes the document reads from
    QPdfDocument* m_document;
    QPdfView* m_view;
};

} // namespace scrivly
