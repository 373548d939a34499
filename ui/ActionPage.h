#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <initializer_list>

class ElidedLabel;
class QAbstractButton;
class QFrame;
class QHBoxLayout;
class QKeyEvent;
class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;
class QTreeWidgetItem;
class QVBoxLayout;
class SCListView;

// The page of a dated program mode: one large recommended way into the tax
// program with its explanation, the other ways as a row of smaller buttons,
// and below them the case files of the working folder.
//
// The recommendation is chosen on every refresh (updateUI) from the settings
// as they are then:
//   A  the last case file exists             open it
//   B  else last year's case file was found  take its data over
//   C  else                                  create a new case file
//
// The page starts no program itself; it emits the start signals, which the
// main window forwards to the launching code. The subclasses of the modes set
// the captions and comments.
class ActionPage : public QWidget
{
    Q_OBJECT

public:
    enum ModeAction {
        ActionNew = 0,
        ActionOther = 1,
        ActionConvert = 2,   // take over the data of an older case file
        ActionLast = 3,
        ActionHeading = 4    // the page heading, a caption without a button
    };
    Q_ENUM(ModeAction)

    // Last year's settings file and case file are found by putting the
    // previous program version and tax year into this release's paths.
    static constexpr const char* currentVersion = "17";
    static constexpr const char* lastVersion = "16";
    static constexpr const char* thisYear = "2011";
    static constexpr const char* lastYear = "2010";

    explicit ActionPage(QWidget* parent = nullptr);
    ~ActionPage() override;

    void setActionCaption(ModeAction action, const QString& caption);
    void setActionComment(ModeAction action, const QString& comment);
    QToolButton* actionButton(ModeAction action) const;   // null for the heading
    QString actionComment(ModeAction action) const;

    // The action offered by the large button since the last refresh.
    ModeAction recommendedAction() const { return m_recommended; }

    // Refreshes the file list and chooses the recommended action; the main
    // window calls it whenever it shows the page.
    virtual void updateUI();

    // The page's controls in the order the eye meets them: the recommended
    // action, the other actions left to right, the folder buttons, the search
    // field, the list and its buttons. The tab order follows it after every refresh.
    QList<QWidget*> focusOrder() const;

    // The working folder, ending in "/".
    QString lastWorkDir() const;
    // The most recently used case file, or empty when it no longer exists.
    QString getLastFilePath() const;
    // Last year's most recently used case file, or empty when there is none.
    QString getFilePathToConvert() const;
    static QStringList parseNameFilters(const QString& fileTypes);

public slots:
    void openLastFile();
    void openOtherFile();
    void openOldFile();
    void openCurrentItem();
    void openTreeItem(QTreeWidgetItem* item, int column);
    void updateOpenButton();
    void changeFolder();
    void gotoHomeDataDir();
    void showOverview();

signals:
    void startORVClicked();                        // a new case file
    void startORVClicked(const QString& path);     // open this case file
    void startConvertClicked();                    // the tax program's own data takeover
    void startConvertClicked(const QString& path); // take over this older case file
    void back();

protected:
    // Enter on a row of the list opens it, as a double click does.
    void keyPressEvent(QKeyEvent* event) override;
    // Only the page in view watches its folder.
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

    void initUI();
    QToolButton* buildActionButton(QWidget* parent, const QString& text, const QString& imageName,
                                   int size);
    void setButtonFontSize(QAbstractButton* button, int pixelSize);
    void updateButtonMinSize(QAbstractButton* button);
    void buildFileView();
    void updateFileView();
    // Shows the listed folder and whether it holds files.
    void workDirChanged();

private:
    void recommend(ModeAction action, const QString& commentHtml);
    void arrangeFurtherActions(std::initializer_list<ModeAction> actions);

    QToolButton* m_buttons[ActionHeading] = {};
    QString m_fileToConvert;
    ModeAction m_recommended = ActionNew;

    QVBoxLayout* m_mainLayout = nullptr;
    QHBoxLayout* m_recommendedLayout = nullptr;
    QHBoxLayout* m_furtherActions = nullptr;
    QLabel* m_heading = nullptr;
    QFrame* m_actionPanel = nullptr;
    QLabel* m_comment = nullptr;

    QString m_folder;   // the folder the file list shows, ending in "/"
    ElidedLabel* m_folderLabel = nullptr;
    QLabel* m_emptyFolderLabel = nullptr;
    QLineEdit* m_searchField = nullptr;
    SCListView* m_fileView = nullptr;
    QToolButton* m_changeFolderButton = nullptr;
    QPushButton* m_openButton = nullptr;
    QPushButton* m_overviewButton = nullptr;
    QToolButton* m_homeButton = nullptr;

    QFont m_font;
    QFont m_boldFont;
    QColor m_highlightColor;

    QString m_captions[ActionHeading + 1];
    QString m_comments[ActionHeading + 1];
};
