#pragma once

#include <QLinearGradient>
#include <QPixmap>
#include <QObject>
#include <QString>

#include <array>
#include <future>

class ActionPage;
class QAction;
class QFrame;
class QHBoxLayout;
class QLabel;
class QLayout;
class QMainWindow;
class QMenu;
class QState;
class QStateMachine;
class QToolBar;
class QVBoxLayout;
class QWidget;
class SelectionButton;
class StartCenter;

// The widgets of the main window: header picture, the column of mode
// buttons, the stack with one page per mode, the tool bar with its actions
// and menus, and the animation that slides the chosen page into view.
class Ui_MainWindow : public QObject
{
    Q_OBJECT

public:
    // The program modes, numbered as stored under "StartCenter"/"Modus".
    enum Mode { ModeNormal, ModeVorweg, ModeErmaess, ModeEinur, ModeEinurVor, ModeFest, ModeCount };
    // The mode's internal name ("normal", "vorweg", ...): the layered
    // settings' mode and the tool-tip key of its button.
    static const char* modeName(int mode);

    // Builds every widget into window, which must be the StartCenter; the
    // edition (0 to 5) decides the tool bar's extra action.
    void setupUi(QMainWindow* window, int edition);
    // Window title, action texts and tool tips, button captions; the tool
    // tips only with withToolTips.
    void retranslateUi(QMainWindow* window, bool withToolTips);
    // Shows the header picture afresh.
    void updateUi();

    QSize headerSize() const;
    // The header picture at the header's size, decoded and scaled on a
    // worker thread while the caller goes on; headerPicture turns the result
    // into the pixmap to show.
    std::future<QImage> decodeHeaderPicture() const;
    QPixmap headerPicture(const QImage& decoded) const;
    void createActions(QMainWindow* window);
    void createToolBar(QMainWindow* window);
    void createSelectionButtons();
    SelectionButton* createModusButton(const QString& objectName, const QString& iconName);
    void addDivider(QLayout* layout);
    // Text of "StartCenter.HelpText"/key; an action's text is wrapped to 210
    // pixels in the window font when a tool button first shows it.
    void assignToolTip(QWidget* widget, const QString& key);
    void assignToolTip(QAction* action, const QString& key);
    void connectActionPage(ActionPage* page);
    void initAnimation();

    // Refreshes the mode's page, slides it in and checks its button.
    void showMode(int mode);
    void showModeNormal() { showMode(ModeNormal); }
    void showModeVorweg() { showMode(ModeVorweg); }
    void showModeErmaess() { showMode(ModeErmaess); }
    void showModeEinur() { showMode(ModeEinur); }
    void showModeEinurVor() { showMode(ModeEinurVor); }
    void showModeFest() { showMode(ModeFest); }

    // The mode's page; null until the mode was first shown.
    ActionPage* page(int mode) const;
    SelectionButton* modeButton(int mode) const;

signals:
    void showPageNormal();
    void showPageVorweg();
    void showPageErmaess();
    void showPageEinur();
    void showPageEinurVor();
    void showPageFest();

private:
    QAction* newAction(const char* objectName, const char* iconName);
    // Hides every page that is out of view and not the chosen one, so that
    // no hidden control takes the focus or reaches a screen reader.
    void hideParkedPages();
    // Tab order: the mode column, the chosen page, the tool bar. The mode
    // buttons are one stop, the checked one; the arrow keys move among them.
    void updateFocusOrder();
    // The tool bar's extra action of the edition, if it has one.
    QAction* editionAction() const;
    int metric(int customMetric) const;
    // The mode's page, built and connected on the first call.
    ActionPage* buildPage(int mode);
    void animatePage(int mode);

    StartCenter* m_window = nullptr;
    int m_edition = 0;
    std::array<SelectionButton*, ModeCount> m_modeButtons{};
    QToolBar* m_toolBar = nullptr;

    QAction* m_actionBeraterPlus = nullptr;
    QAction* m_actionBerater = nullptr;
    QAction* m_actionKursel = nullptr;
    QAction* m_actionHandbuch = nullptr;
    QAction* m_actionSupport = nullptr;
    QAction* m_actionOnlineUpdate = nullptr;
    QAction* m_actionOptionen = nullptr;
    QAction* m_actionReport = nullptr;
    QAction* m_actionNetViewet = nullptr;
    QAction* m_actionProgFolder = nullptr;
    QAction* m_actionTaxFolder = nullptr;
    QAction* m_actionUninstall = nullptr;
    QAction* m_actionOnlineStart = nullptr;
    QAction* m_actionOnlineConfig = nullptr;

    QMenu* m_supportMenu = nullptr;
    QMenu* m_onlineUpdateMenu = nullptr;

    QWidget* m_centralWidget = nullptr;
    QVBoxLayout* m_mainLayout = nullptr;
    QHBoxLayout* m_centralLayout = nullptr;
    QVBoxLayout* m_selectionLayout = nullptr;
    QLabel* m_header = nullptr;
    QFrame* m_centerStack = nullptr;
    std::array<ActionPage*, ModeCount> m_pages{};
    int m_shownMode = -1;

    QStateMachine* m_stateMachine = nullptr;
    QState* m_modeStateGroup = nullptr;
    std::array<QState*, ModeCount> m_pageStates{};

    QLinearGradient m_toolbarGradient;
};
