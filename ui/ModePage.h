#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <QStringList>
#include <QWidget>

class ElidedLabel;
class HoverLabel;
class QFrame;
class QLabel;
class QPushButton;
class QToolButton;
class QVBoxLayout;
class SCListView;

// The list-style mode page: four entries one below the other - a new case
// file, the data takeover, the last case file and the case files of the
// working folder - of which the new-file or the last-file entry is
// highlighted as the likely next step. Working folder and last file live in
// the settings and are read again whenever the page is shown.
class ModePage : public QWidget
{
    Q_OBJECT

public:
    enum ModeFunction {
        FunctionNew = 0,
        FunctionLast = 1,
        FunctionOther = 2,     // the file list of the working folder
        FunctionConvert = 3,
        FunctionHeading = 4    // the page heading, a caption without a frame
    };
    Q_ENUM(ModeFunction)

    explicit ModePage(QWidget* parent = nullptr);
    ~ModePage() override;

    void setFunctionCaption(ModeFunction function, const QString& caption);
    void enableFunction(ModeFunction function, bool enabled);
    QFrame* getFrameByFunction(ModeFunction function) const;   // null for the heading
    QLabel* getLabelByFunction(ModeFunction function) const;
    void highlightFunction(ModeFunction function, bool on);

    // The working folder, ending in "/".
    QString lastWorkDir() const;
    static QStringList parseNameFilters(const QString& fileTypes);

public slots:
    void fileSelected(const QString& name);
    void openSelectedFile();
    void openLastFile();
    void selectDirectory();
    void gotoHomeDataDir();
    void showOverview();
    void workDirChanged();
    void updateFileView();
    void updateNoFileMessage();
    void updateLastFileLabel();
    void updateHighLight();

signals:
    void selectedFile(const QString& name);
    void startORVClicked();
    void startORVClicked(const QString& path);
    void startConvertClicked();

protected:
    void showEvent(QShowEvent* event) override;

private:
    struct Entry
    {
        QFrame* frame = nullptr;
        HoverLabel* caption = nullptr;
        QToolButton* icon = nullptr;
    };

    void initUI();
    Entry createEntry(ModeFunction function, const char* objectName, const char* imageName,
                      const char* toolTipKey);
    void createOtherFilesEntry();
    void addDivider();
    void layoutEntries();

    QFont m_font;
    QFont m_boldFont;
    QColor m_highlightColor;
    QVBoxLayout* m_layout = nullptr;

    Entry m_entries[FunctionHeading];
    QLabel* m_heading = nullptr;
    QLabel* m_lastFileLabel = nullptr;
    SCListView* m_fileView = nullptr;
    ElidedLabel* m_folderLabel = nullptr;
    QLabel* m_noFileLabel = nullptr;
    QPushButton* m_openButton = nullptr;
    QToolButton* m_selectFolderButton = nullptr;
    QToolButton* m_homeButton = nullptr;
    QToolButton* m_overviewButton = nullptr;

    QString m_captions[FunctionHeading + 1];
    // The missing last file the user was told about, so that the box comes
    // once per disappearance and not on every refresh.
    QString m_reportedMissingFile;
};
