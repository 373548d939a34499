#pragma once

#include <QWidget>

#include <string>

class QLabel;
class QPushButton;
class QStackedLayout;
class QTextEdit;

// A side panel with a short summary of the selected case file: its name, the
// persons of the case and the user's comment, with a button that opens the
// external detail viewer. Without a file it points to the sample cases.
class QuickViewWidget : public QWidget
{
    Q_OBJECT

public:
    explicit QuickViewWidget(QWidget* parent = nullptr);

    // Shows the summary of the file (a path that may hold folder symbols);
    // an empty name shows the hint page.
    void setFile(const QString& fileName);

public slots:
    // Starts the external viewer on the current file.
    void openQuickView();

private:
    QWidget* createNoFilePage();
    QWidget* createInformationPage();
    void applyPalette();
    void showPlaceholders();

    QStackedLayout* m_pages = nullptr;
    QWidget* m_noFilePage = nullptr;
    QWidget* m_informationPage = nullptr;
    QLabel* m_fileLabel = nullptr;
    QTextEdit* m_persons = nullptr;
    QTextEdit* m_comment = nullptr;
    QPushButton* m_moreButton = nullptr;
    std::string m_path;   // the current file, composed (Latin-1)
};
