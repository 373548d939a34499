#include "Ui_MainWindow.h"

#include "ActionPage.h"
#include "ConfigText.h"
#include "Configuration.h"
#include "FocusChain.h"
#include "FontHelper.h"
#include "ModePages.h"
#include "OnlineUpdate.h"
#include "PixmapLoader.h"
#include "PixmapManager.h"
#include "SCAppStyle.h"
#include "SCColors.h"
#include "SelectionButton.h"
#include "StartCenter.h"

#include <QAction>
#include <QApplication>
#include <QBoxLayout>
#include <QFrame>
#include <QIconEngine>
#include <QImage>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QPropertyAnimation>
#include <QScreen>
#include <QSignalTransition>
#include <QState>
#include <QStateMachine>
#include <QToolBar>
#include <QToolButton>

#include <algorithm>
#include <functional>
#include <optional>
#include <utility>

namespace {

using PageSignal = void (Ui_MainWindow::*)();
using ClickHandler = void (StartCenter::*)();

struct ModeDescription
{
    const char* name;
    const char* buttonName;
    const char* pageName;
    const char* caption;
    const char* subCaption;
    PageSignal pageSignal;
    ClickHandler clickHandler;
    ActionPage* (*createPage)(QWidget* parent);
};

template<class Page>
ActionPage* createPage(QWidget* parent)
{
    return new Page(parent);
}

// Captions are UTF-8 here: they go to the user interface, not to the settings.
const ModeDescription modes[Ui_MainWindow::ModeCount] = {
    {"normal", "BtnNormal", "pageNormal", "Steuererklärung 2011", "",
     &Ui_MainWindow::showPageNormal, &StartCenter::buttonNormalClicked, &createPage<ModePageNormal>},
    {"vorweg", "BtnVorweg", "pageVorweg", "Prognose/Vorweg-Erfassung 2012", "",
     &Ui_MainWindow::showPageVorweg, &StartCenter::buttonVorwegClicked, &createPage<ModePageVorweg>},
    {"ermaess", "BtnErmaess", "pageErmaess", "Lohnsteuer-Ermäßigung 2012", "",
     &Ui_MainWindow::showPageErmaess, &StartCenter::buttonErmaessClicked, &createPage<ModePageErmaess>},
    {"einur", "BtnEinur", "pageEinur", "Gewinnermittlung 2011", "Umsatz-/Gewerbesteuer",
     &Ui_MainWindow::showPageEinur, &StartCenter::buttonEinurClicked, &createPage<ModePageEinur>},
    {"einurvor", "BtnEinurVor", "pageEinurVor", "Gewinn-Erfassung 2012", "Umsatzsteuervoranmeldung",
     &Ui_MainWindow::showPageEinurVor, &StartCenter::buttonEinurVorClicked, &createPage<ModePageEinurVor>},
    {"fest", "BtnFest", "pageFest", "Gesonderte Feststellung 2011", "",
     &Ui_MainWindow::showPageFest, &StartCenter::buttonFestClicked, &createPage<ModePageFest>},
};

constexpr int toolTipWidth = 210;
constexpr int dividerGap = 5;
constexpr int selectionSpacing = 2;
constexpr int centralMargin = 5;
constexpr int pageSlideDurationMs = 500;

// A picture by its role: the edition's information file may name another
// picture for the role (section = role, key "pic").
QPixmap picture(const char* role, const char* defaultName)
{
    PixmapManager* pixmaps = PixmapManager::theInstance();
    return *pixmaps->getPixmap(pixmaps->resolvePixName(role, defaultName));
}

// The header label takes its picture over when it is first shown: the
// picture is decoded on a worker thread while the rest of the window is
// built.
class HeaderLabel : public QLabel
{
public:
    HeaderLabel(QWidget* parent, std::function<QPixmap()> picture)
        : QLabel(parent)
        , m_picture(std::move(picture))
    {
    }

protected:
    void showEvent(QShowEvent* event) override
    {
        if (m_picture)
            setPixmap(std::exchange(m_picture, nullptr)());
        QLabel::showEvent(event);
    }

private:
    std::function<QPixmap()> m_picture;
};

// An icon whose picture the image manager decodes when it is first shown:
// most actions sit in menus, which show no icons, or in no bar at all.
class PictureIconEngine : public QIconEngine
{
public:
    PictureIconEngine(QByteArray role, QByteArray defaultName)
        : m_role(std::move(role))
        , m_defaultName(std::move(defaultName))
    {
    }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override
    {
        icon().paint(painter, rect, Qt::AlignCenter, mode, state);
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        return icon().pixmap(size, mode, state);
    }
    QSize actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        return icon().actualSize(size, mode, state);
    }
    QIconEngine* clone() const override { return new PictureIconEngine(*this); }
    // Answered without decoding; a missing picture only draws nothing.
    bool isNull() override { return false; }

private:
    const QIcon& icon()
    {
        if (!m_icon)
            m_icon = QIcon(picture(m_role.constData(), m_defaultName.constData()));
        return *m_icon;
    }

    QByteArray m_role;
    QByteArray m_defaultName;
    std::optional<QIcon> m_icon;
};

// Word-wraps an action's tool tip when a tool button first shows it, not
// for every action at start: most tips are never looked at. Until then the
// action carries the unwrapped text.
class ToolTipWrapper : public QObject
{
public:
    using QObject::QObject;
    static constexpr const char* pendingProperty = "toolTipToWrap";

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::ToolTip)
            return false;
        auto* button = qobject_cast<QToolButton*>(watched);
        QAction* action = button ? button->defaultAction() : nullptr;
        if (action && action->property(pendingProperty).toBool()) {
            action->setProperty(pendingProperty, QVariant());
            // The button takes the new text over at once, before it shows it.
            action->setToolTip(StartCenter::doWordWrap(action->toolTip(), toolTipWidth, button->window()->font(), false));
        }
        return false;
    }
};

QString helpText(const QString& key)
{
    return configText("StartCenter.HelpText", key.toLatin1().constData());
}

} // namespace

const char* Ui_MainWindow::modeName(int mode)
{
    return mode >= 0 && mode < ModeCount ? modes[mode].name : modes[ModeNormal].name;
}

int Ui_MainWindow::metric(int customMetric) const
{
    const int value = m_window->style()->pixelMetric(QStyle::PixelMetric(customMetric));
    if (value > 0)
        return value;
    // Another style than the launcher's own (a test, a broken style setting):
    // the launcher's values still fix the layout.
    const QScreen* screen = QGuiApplication::primaryScreen();
    return SCAppStyle::customPixelMetric(customMetric - QStyle::PM_CustomBase,
                                         screen ? screen->geometry().size() : QSize())
        .value_or(0);
}

void Ui_MainWindow::setupUi(QMainWindow* window, int edition)
{
    m_window = qobject_cast<StartCenter*>(window);
    Q_ASSERT(m_window);
    m_edition = edition;

    // The header, by far the largest picture, is decoded while the window
    // is built and shown once the rest is ready.
    const std::shared_future<QImage> header = decodeHeaderPicture().share();
    QFont font = QApplication::font();
    font.setPointSize(int(font.pointSize() / FontHelper().getFontScale()));
    window->setFont(font);
    window->setObjectName(QStringLiteral("MainWindow"));
    window->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    // The close button is not implied on X11 and Wayland as it is on the Mac.
    window->setWindowFlags(Qt::Window | Qt::MSWindowsFixedSizeDialogHint | Qt::WindowTitleHint
                           | Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint
                           | Qt::WindowCloseButtonHint);
    window->setContextMenuPolicy(Qt::PreventContextMenu);

    const QColor toolbarTop = SCColors::getColor(SCColors::keyToolbarGradientTop, QColor(68, 122, 210));
    const QColor toolbarBottom = SCColors::getColor(SCColors::keyToolbarGradientBottom, QColor(50, 77, 127));
    m_toolbarGradient = QLinearGradient(0, 0, metric(SCAppStyle::PM_ModeDividerWidth), 0);
    m_toolbarGradient.setColorAt(0.0, toolbarTop);
    m_toolbarGradient.setColorAt(0.5, toolbarBottom);
    m_toolbarGradient.setColorAt(1.0, toolbarTop);

    const QColor background = SCColors::getColor(SCColors::keyBackground, QColor(245, 245, 245));
    QLinearGradient backgroundGradient(0, 82, 0, 510);
    backgroundGradient.setColorAt(0.0, Qt::white);
    backgroundGradient.setColorAt(1.0, QColor(247, 247, 249));
    QBrush backgroundBrush(backgroundGradient);
    backgroundBrush.setColor(SCColors::mixColor(Qt::white, 50, QColor(247, 247, 249), 50));
    QPalette windowPalette = window->palette();
    windowPalette.setColor(QPalette::Window, background);
    windowPalette.setBrush(QPalette::Window, backgroundBrush);
    window->setPalette(windowPalette);

    createActions(window);

    m_centralWidget = new QWidget(window);
    m_centralWidget->setObjectName(QStringLiteral("centralwidget"));
    m_mainLayout = new QVBoxLayout(m_centralWidget);
    m_mainLayout->setObjectName(QStringLiteral("MainLayout"));
    m_mainLayout->setSpacing(0);
    m_mainLayout->setContentsMargins(0, 0, 0, 0);

    m_header = new HeaderLabel(m_centralWidget, [this, header] { return headerPicture(header.get()); });
    m_header->setObjectName(QStringLiteral("Header"));
    m_header->setFixedSize(headerSize());
    m_mainLayout->addWidget(m_header);

    m_centralLayout = new QHBoxLayout();
    m_centralLayout->setObjectName(QStringLiteral("CentralLayout"));
    m_centralLayout->setContentsMargins(centralMargin, centralMargin, centralMargin, centralMargin);
    m_centralLayout->setSpacing(0);
    m_centralLayout->setSizeConstraint(QLayout::SetFixedSize);
    m_selectionLayout = new QVBoxLayout();
    m_selectionLayout->setObjectName(QStringLiteral("SelectionLayout"));
    m_selectionLayout->setSpacing(selectionSpacing);
    m_selectionLayout->setContentsMargins(0, 0, 0, 0);
    createSelectionButtons();
    m_centralLayout->addLayout(m_selectionLayout);

    // The space beside the column is split evenly before and after the pages.
    const int pageWidth = metric(SCAppStyle::PM_PageWidth);
    const int freeWidth = metric(SCAppStyle::PM_MainWindowWidth) - 2 * centralMargin
        - metric(SCAppStyle::PM_ModeDividerWidth) - pageWidth;
    m_centralLayout->addSpacing(freeWidth / 2);
    m_centerStack = new QFrame(m_centralWidget);
    m_centerStack->setObjectName(QStringLiteral("CenterStack"));
    m_centerStack->setFrameShape(QFrame::NoFrame);
    m_centerStack->setFixedSize(pageWidth, metric(SCAppStyle::PM_PageHeight));
    QPalette stackPalette = m_centerStack->palette();
    stackPalette.setColor(QPalette::WindowText, SCColors::getDesignDarkBlue());
    stackPalette.setColor(QPalette::Window, SCColors::getColor(SCColors::keyDefaultBkg, QColor(239, 242, 243)));
    m_centerStack->setPalette(stackPalette);
    m_centerStack->setAutoFillBackground(true);
    m_centralLayout->addWidget(m_centerStack);
    m_centralLayout->addSpacing(freeWidth - freeWidth / 2);
    m_mainLayout->addLayout(m_centralLayout);
    m_mainLayout->addStretch();
    window->setCentralWidget(m_centralWidget);

    for (int mode = 0; mode < ModeCount; ++mode) {
        connect(m_modeButtons[mode], &QAbstractButton::clicked, m_window, modes[mode].clickHandler);
        connect(m_modeButtons[mode], &SelectionButton::doubleClicked, m_window,
                qOverload<>(&StartCenter::startORV));
    }

    createToolBar(window);
    retranslateUi(window, true);
    window->setFixedSize(metric(SCAppStyle::PM_MainWindowWidth), metric(SCAppStyle::PM_MainWindowHeight));
    QMetaObject::connectSlotsByName(window);

    // The pages are built when first shown (buildPage): the window starts
    // with the page of its mode only.
    initAnimation();
}

void Ui_MainWindow::retranslateUi(QMainWindow* window, bool withToolTips)
{
    window->setWindowTitle(QStringLiteral("Start-Center 2012"));

    struct ActionText
    {
        QAction* action;
        const char* text;
        const char* toolTipKey;   // null: no tool tip
        const char* barText;      // the tool bar's caption with its mnemonic; null: not on the bar
    };
    const ActionText actionTexts[] = {
        {m_actionBeraterPlus, "SteuerBerater", "SteuerBerater", "Steuer&Berater"},
        {m_actionBerater, "orvane-berater", "orvane-berater.example", "orvane-&berater"},
        {m_actionKursel, "Kursel", "Kursel", "&Kursel"},
        {m_actionHandbuch, "Handbuch", "Programmhandbuch", "&Handbuch"},
        {m_actionSupport, "Support", "Support", "&Support"},
        {m_actionOnlineUpdate, "Online-Update", "OnlineUpdate", "Online-&Update"},
        {m_actionOptionen, "Optionen", "Konfiguration", "&Optionen"},
        {m_actionReport, "Report erstellen", nullptr, nullptr},
        {m_actionNetViewet, "NetViewer starten", nullptr, nullptr},
        {m_actionProgFolder, "Programmordner öffnen", nullptr, nullptr},
        {m_actionTaxFolder, "Steuerfallordner öffnen", nullptr, nullptr},
        {m_actionUninstall, "Deinstallation", nullptr, nullptr},
        {m_actionOnlineStart, "Online-Update starten", nullptr, nullptr},
        {m_actionOnlineConfig, "Konfiguration", nullptr, nullptr},
    };
    for (const ActionText& entry : actionTexts) {
        entry.action->setText(QString::fromUtf8(entry.text));
        if (entry.barText)
            entry.action->setIconText(QString::fromUtf8(entry.barText));
        if (withToolTips && entry.toolTipKey)
            assignToolTip(entry.action, QLatin1String(entry.toolTipKey));
    }

    for (int mode = 0; mode < ModeCount; ++mode) {
        m_modeButtons[mode]->setText(QString::fromUtf8(modes[mode].caption));
        m_modeButtons[mode]->setSubText(QString::fromUtf8(modes[mode].subCaption));
        if (withToolTips)
            assignToolTip(m_modeButtons[mode], QLatin1String(modes[mode].name));
    }
}

void Ui_MainWindow::updateUi()
{
    m_header->setPixmap(headerPicture(decodeHeaderPicture().get()));
}

QSize Ui_MainWindow::headerSize() const
{
    return QSize(metric(SCAppStyle::PM_HeaderPictureWidth), metric(SCAppStyle::PM_HeaderPictureHeight));
}

namespace {

std::string headerPictureName()
{
    return PixmapManager::theInstance()->resolvePixName("Header", "sc_header");
}

// The pixels a pixmap keeps of a picture: without transparent pixels opaque
// RGB32, else premultiplied. Smooth scaling gives other colours for the same
// picture in another format, so the header is scaled from these, as when
// the label scaled its pixmap.
QImage asPixmapPixels(const QImage& picture)
{
    const QImage argb = picture.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < argb.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(argb.constScanLine(y));
        if (std::any_of(line, line + argb.width(), [](QRgb pixel) { return qAlpha(pixel) != 255; }))
            return argb.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    }
    return argb.convertToFormat(QImage::Format_RGB32);
}

// The picture fills the header. A picture of another size (the small-screen
// metrics, another edition's picture) is scaled smoothly, in device pixels,
// once rather than by the label at every paint.
QImage fitToHeader(const QImage& picture, const QSize& size, qreal ratio)
{
    if (picture.isNull() || picture.size() == size)
        return picture;
    QImage scaled = asPixmapPixels(picture).scaled(size * ratio, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    scaled.setDevicePixelRatio(ratio);
    return scaled;
}

} // namespace

// The picture is read here, as the image manager is for the main thread
// only; decoding and scaling take milliseconds and run on their own thread,
// or on the first get() when no thread can be started.
std::future<QImage> Ui_MainWindow::decodeHeaderPicture() const
{
    std::optional<EncodedPicture> encoded = PixmapManager::theInstance()->getEncoded(headerPictureName());
    return std::async(std::launch::async | std::launch::deferred,
                      [encoded = std::move(encoded), size = headerSize(), ratio = m_window->devicePixelRatioF()] {
                          return encoded ? fitToHeader(encoded->decode(), size, ratio) : QImage();
                      });
}

// Bytes that are no picture leave the choice to the image manager, which
// then asks its other sources.
QPixmap Ui_MainWindow::headerPicture(const QImage& decoded) const
{
    if (!decoded.isNull())
        return QPixmap::fromImage(decoded);
    return QPixmap::fromImage(fitToHeader(PixmapManager::theInstance()->getPixmap(headerPictureName())->toImage(),
                                          headerSize(), m_window->devicePixelRatioF()));
}

QAction* Ui_MainWindow::newAction(const char* objectName, const char* iconName)
{
    auto* action = new QAction(QIcon(new PictureIconEngine(objectName, iconName)), QString(), m_window);
    action->setObjectName(QLatin1String(objectName));
    return action;
}

void Ui_MainWindow::createActions(QMainWindow*)
{
    StartCenter* window = m_window;
    m_actionBeraterPlus = newAction("actionBeraterPlus", "sc_berater-small");
    connect(m_actionBeraterPlus, &QAction::triggered, window, &StartCenter::openBeraterPlus);
    m_actionBerater = newAction("actionBerater", "onlineberater_blau-small");
    connect(m_actionBerater, &QAction::triggered, window, &StartCenter::openBerater);
    m_actionKursel = newAction("actionKursel", "kompass-small");
    connect(m_actionKursel, &QAction::triggered, window, &StartCenter::openTaxbook);
    m_actionHandbuch = newAction("actionHandbuch", "handbuch");
    m_actionHandbuch->setShortcut(QKeySequence(Qt::Key_F1));
    connect(m_actionHandbuch, &QAction::triggered, window, &StartCenter::openManual);
    m_actionSupport = newAction("actionSupport", "support");
    m_actionOnlineUpdate = newAction("actionOnlineUpdate", "online-small");
    m_actionOptionen = newAction("actionOptionen", "optionen");
    m_actionOptionen->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    connect(m_actionOptionen, &QAction::triggered, window, &StartCenter::showOptions);
    m_actionReport = newAction("actionReport", "menu_report");
    connect(m_actionReport, &QAction::triggered, window, &StartCenter::startReportTool);
    m_actionNetViewet = newAction("actionNetViewet", "netviewer-small");
    connect(m_actionNetViewet, &QAction::triggered, window, &StartCenter::startNetViewer);
    m_actionProgFolder = newAction("actionProgFolder", "folder-closed-small");
    connect(m_actionProgFolder, &QAction::triggered, window, &StartCenter::openProgramFolder);
    m_actionTaxFolder = newAction("actionTaxFolder", "folder-closed-small");
    connect(m_actionTaxFolder, &QAction::triggered, window, &StartCenter::openTaxFolder);
    m_actionUninstall = newAction("actionUninstall", "cd");
    connect(m_actionUninstall, &QAction::triggered, window, &StartCenter::startUninstall);
    m_actionOnlineStart = newAction("actionOnlineStart", "menu_online");
    connect(m_actionOnlineStart, &QAction::triggered, window, &StartCenter::startOnlineUpdate);
    m_actionOnlineConfig = newAction("actionOnlineConfig", "online_konfig");
    connect(m_actionOnlineConfig, &QAction::triggered, window, &StartCenter::showOnlineConfiguration);
}

QAction* Ui_MainWindow::editionAction() const
{
    switch (m_edition) {
    case 0:
        return m_actionKursel;
    case 1:
    case 3:
        return m_actionBeraterPlus;
    case 2:
        return m_actionBerater;
    default:
        return nullptr;
    }
}

void Ui_MainWindow::createToolBar(QMainWindow* window)
{
    m_toolBar = new QToolBar(window);
    m_toolBar->setObjectName(QStringLiteral("toolBar"));
    m_toolBar->setMovable(false);
    m_toolBar->setOrientation(Qt::Horizontal);
    m_toolBar->setIconSize(QSize(24, 24));
    m_toolBar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    window->addToolBar(Qt::BottomToolBarArea, m_toolBar);

    if (QAction* extra = editionAction())
        m_toolBar->addAction(extra);
    m_toolBar->addAction(m_actionHandbuch);
    m_toolBar->addAction(m_actionSupport);
    m_toolBar->addAction(m_actionOnlineUpdate);
    m_toolBar->addAction(m_actionOptionen);

    m_supportMenu = new QMenu(window);
    m_supportMenu->setObjectName(QStringLiteral("supportMenu"));
    m_supportMenu->addAction(m_actionNetViewet);
    m_supportMenu->addAction(m_actionProgFolder);
    m_supportMenu->addAction(m_actionTaxFolder);
    if (!cConfiguration::theInstance()->GetString("StartCenter", "ProductCode", "").empty())
        m_supportMenu->addAction(m_actionUninstall);
    m_actionSupport->setMenu(m_supportMenu);

    m_onlineUpdateMenu = new QMenu(window);
    m_onlineUpdateMenu->setObjectName(QStringLiteral("onlineUpdateMenu"));
    if (OnlineUpdate::theInstance()->isExecutable()) {
        m_onlineUpdateMenu->addAction(m_actionOnlineStart);
        m_onlineUpdateMenu->addAction(m_actionOnlineConfig);
        m_actionOnlineUpdate->setMenu(m_onlineUpdateMenu);
    } else {
        m_actionOnlineUpdate->setEnabled(false);
        m_actionOnlineUpdate->setVisible(false);
    }

    // The first tool button of the bar is its extension button, hence the
    // start at the second: every action's button opens its menu at once.
    const QList<QToolButton*> buttons = m_toolBar->findChildren<QToolButton*>();
    for (qsizetype i = 1; i < buttons.size(); ++i)
        buttons.at(i)->setPopupMode(QToolButton::InstantPopup);
    // A tool bar keeps its buttons out of the tab order; here they are the
    // only way to the manual, the support menu and the options.
    for (QAction* action : m_toolBar->actions())
        m_toolBar->widgetForAction(action)->setFocusPolicy(Qt::TabFocus);
    auto* toolTipWrapper = new ToolTipWrapper(m_toolBar);
    for (QToolButton* button : buttons)
        button->installEventFilter(toolTipWrapper);

    QPalette palette = m_toolBar->palette();
    palette.setColor(QPalette::Button, SCColors::getColor(SCColors::keyToolbarGradientTop, QColor(68, 122, 210)));
    palette.setColor(QPalette::AlternateBase,
                     SCColors::getColor(SCColors::keyToolbarGradientBottom, QColor(50, 77, 127)));
    palette.setColor(QPalette::ButtonText, SCColors::getColor(SCColors::keyNormalToolbarText, Qt::white));
    palette.setColor(QPalette::Disabled, QPalette::ButtonText,
                     SCColors::getColor(SCColors::keyDisabledToolbarText, QColor(112, 152, 220)));
    m_toolBar->setPalette(palette);
}

void Ui_MainWindow::createSelectionButtons()
{
    // The buttons share the column's height with the five dividers.
    const int dividerHeight = dividerGap + 1 + 2 * selectionSpacing;
    const int buttonHeight =
        (metric(SCAppStyle::PM_PageHeight) - (ModeCount - 1) * (dividerHeight + selectionSpacing)) / ModeCount;
    for (int mode = 0; mode < ModeCount; ++mode) {
        if (mode > 0)
            addDivider(m_selectionLayout);
        m_modeButtons[mode] = createModusButton(QLatin1String(modes[mode].buttonName),
                                                QLatin1String(modes[mode].name));
        m_modeButtons[mode]->setFixedSize(metric(SCAppStyle::PM_ModeDividerWidth), buttonHeight);
        m_selectionLayout->addWidget(m_modeButtons[mode]);
    }
    m_selectionLayout->addStretch();
}

SelectionButton* Ui_MainWindow::createModusButton(const QString& objectName, const QString& iconName)
{
    auto* button = new SelectionButton(m_centralWidget);
    button->setObjectName(objectName);
    const QByteArray role = objectName.toLatin1();
    const QByteArray name = iconName.toLatin1();
    button->setIcon(QIcon(picture(role.constData(), name.constData())));
    button->setIconSize(QSize(SelectionButton::IconSize, SelectionButton::IconSize));
    button->setCheckable(true);
    button->setAutoExclusive(true);
    button->setFlat(false);
    return button;
}

void Ui_MainWindow::addDivider(QLayout* layout)
{
    if (auto* box = qobject_cast<QBoxLayout*>(layout))
        box->addSpacing(dividerGap);
    auto* divider = new QWidget(m_centralWidget);
    divider->setFixedSize(metric(SCAppStyle::PM_ModeDividerWidth), 1);
    QPalette palette = divider->palette();
    palette.setBrush(QPalette::Window, QBrush(m_toolbarGradient));
    divider->setPalette(palette);
    divider->setAutoFillBackground(true);
    layout->addWidget(divider);
}

void Ui_MainWindow::assignToolTip(QWidget* widget, const QString& key)
{
    widget->setToolTip(helpText(key));
}

// A screen reader reads the tool bar button's tip unwrapped.
void Ui_MainWindow::assignToolTip(QAction* action, const QString& key)
{
    const QString text = helpText(key);
    action->setToolTip(text);
    action->setProperty(ToolTipWrapper::pendingProperty, true);
    if (QWidget* button = m_toolBar ? m_toolBar->widgetForAction(action) : nullptr)
        button->setAccessibleDescription(text.simplified());
}

void Ui_MainWindow::connectActionPage(ActionPage* page)
{
    connect(page, qOverload<>(&ActionPage::startORVClicked), m_window, qOverload<>(&StartCenter::startORV));
    connect(page, qOverload<const QString&>(&ActionPage::startORVClicked), m_window,
            qOverload<const QString&>(&StartCenter::startORV));
    connect(page, qOverload<>(&ActionPage::startConvertClicked), m_window,
            qOverload<>(&StartCenter::startConvert));
    connect(page, qOverload<const QString&>(&ActionPage::startConvertClicked), m_window,
            qOverload<const QString&>(&StartCenter::startConvert));
}

// One state per mode in a group; the chosen mode's state lifts its page into
// place, and leaving that state lets the page slide back (animatePage).
void Ui_MainWindow::initAnimation()
{
    m_stateMachine = new QStateMachine(this);
    m_stateMachine->setGlobalRestorePolicy(QState::RestoreProperties);
    m_modeStateGroup = new QState(m_stateMachine);
    m_modeStateGroup->setObjectName(QStringLiteral("modeStateGroup"));

    for (int mode = 0; mode < ModeCount; ++mode) {
        m_pageStates[mode] = new QState(m_modeStateGroup);
        m_modeStateGroup->addTransition(this, modes[mode].pageSignal, m_pageStates[mode]);
        if (m_pages[mode])
            animatePage(mode);
    }
    m_modeStateGroup->setInitialState(m_pageStates[ModeNormal]);
    m_stateMachine->setInitialState(m_modeStateGroup);
    m_stateMachine->start();
}

// The page waits below the visible area until its mode's state lifts it.
void Ui_MainWindow::animatePage(int mode)
{
    const int width = metric(SCAppStyle::PM_PageWidth);
    const int height = metric(SCAppStyle::PM_PageHeight);
    ActionPage* page = m_pages[mode];
    page->setGeometry(0, height + 10, width, height);
    m_pageStates[mode]->assignProperty(page, "geometry", QRect(0, 0, width, height));

    auto* animation = new QPropertyAnimation(page, "geometry", m_stateMachine);
    animation->setEasingCurve(QEasingCurve::OutQuad);
    animation->setDuration(pageSlideDurationMs);
    connect(animation, &QAbstractAnimation::finished, this, &Ui_MainWindow::hideParkedPages);
    m_stateMachine->addDefaultAnimation(animation);
}

ActionPage* Ui_MainWindow::buildPage(int mode)
{
    if (!m_pages[mode]) {
        m_pages[mode] = modes[mode].createPage(m_centerStack);
        m_pages[mode]->setObjectName(QLatin1String(modes[mode].pageName));
        connectActionPage(m_pages[mode]);
        animatePage(mode);
    }
    return m_pages[mode];
}

void Ui_MainWindow::showMode(int mode)
{
    if (mode < 0 || mode >= ModeCount)
        return;
    m_shownMode = mode;
    ActionPage* page = buildPage(mode);
    page->updateUI();
    // Shown again after its slide out hid it; a page built now is shown at
    // all only this way, since a child added to a window on screen is not.
    page->show();
    emit (this->*modes[mode].pageSignal)();
    m_modeButtons[mode]->setChecked(true);
    m_modeStateGroup->setInitialState(m_pageStates[mode]);
    hideParkedPages();
    updateFocusOrder();
}

// The page left keeps sliding down in view; it is hidden once its slide has
// ended.
void Ui_MainWindow::hideParkedPages()
{
    const QRect view = m_centerStack->rect();
    for (int mode = 0; mode < ModeCount; ++mode) {
        if (m_pages[mode] && mode != m_shownMode && !view.intersects(m_pages[mode]->geometry()))
            m_pages[mode]->hide();
    }
}

void Ui_MainWindow::updateFocusOrder()
{
    QList<QWidget*> order(m_modeButtons.begin(), m_modeButtons.end());
    order += m_pages[m_shownMode]->focusOrder();
    for (QAction* action : m_toolBar->actions())
        order << m_toolBar->widgetForAction(action);
    chainFocus(order);
}

ActionPage* Ui_MainWindow::page(int mode) const
{
    return mode >= 0 && mode < ModeCount ? m_pages[mode] : nullptr;
}

SelectionButton* Ui_MainWindow::modeButton(int mode) const
{
    return mode >= 0 && mode < ModeCount ? m_modeButtons[mode] : nullptr;
}
