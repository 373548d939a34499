#include "ActionPage.h"

#include "CaseFiles.h"
#include "CrossPlatformApi.h"
#include "DMFileName.h"
#include "ElidedLabel.h"
#include "FocusChain.h"
#include "IniFile.h"
#include "NvWinIni.h"
#include "PixmapManager.h"
#include "SCColors.h"
#include "SCListView.h"
#include "StringFunctions.h"

#include <QFileInfo>
#include <QFrame>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLinearGradient>
#include <QPushButton>
#include <QTextDocumentFragment>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace {

// Sizes of the action buttons: the recommended one and those of the row.
constexpr int recommendedIconSize = 64;
constexpr int recommendedFontSize = 15;
constexpr int furtherIconSize = 32;
constexpr int furtherFontSize = 11;

const char* const imageNames[] = {"sc_new", "sc_open", "InspDatenuebernahme", "sc_open"};
const char* const buttonNames[] = {"actionNew", "actionOther", "actionConvert", "actionLast"};

// Plain text for a rich-text label: markup characters shown as they are,
// line breaks kept.
QString toHtml(const QString& plain)
{
    return plain.toHtmlEscaped().replace(QLatin1Char('\n'), QLatin1String("<br>"));
}

} // namespace

ActionPage::ActionPage(QWidget* parent)
    : QWidget(parent)
{
    initUI();
}

ActionPage::~ActionPage() = default;

void ActionPage::initUI()
{
    // Only the roles set here override what the page inherits.
    m_highlightColor = palette().color(QPalette::HighlightedText);
    QPalette pagePalette;
    pagePalette.setColor(QPalette::Active, QPalette::ButtonText, SCColors::getDesignDarkBlue());
    setPalette(pagePalette);

    m_font = parentWidget() ? parentWidget()->font() : font();
    m_font.setWeight(QFont::Normal);
    m_boldFont = m_font;
    m_boldFont.setWeight(QFont::Bold);
    setFont(m_font);

    m_mainLayout = new QVBoxLayout(this);
    m_mainLayout->setContentsMargins(0, 0, 0, 0);
    m_mainLayout->setSpacing(6);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);

    m_heading = new QLabel(this);
    m_heading->setObjectName(QStringLiteral("heading"));
    QFont headingFont = m_boldFont;
    headingFont.setPixelSize(16);
    m_heading->setFont(headingFont);
    QPalette headingPalette;
    headingPalette.setColor(QPalette::WindowText, SCColors::getDesignDarkBlue());
    m_heading->setPalette(headingPalette);
    m_heading->setContentsMargins(4, 2, 4, 0);
    m_mainLayout->addWidget(m_heading);

    // One panel holds all actions: the recommended one with its comment on
    // top, the others in a row along the bottom.
    m_actionPanel = new QFrame(this);
    m_actionPanel->setObjectName(QStringLiteral("actions"));
    m_actionPanel->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    m_actionPanel->setMinimumHeight(210);
    QLinearGradient gradient(0, 0, 0, 140);
    QColor transparent = m_highlightColor;
    transparent.setAlpha(0);
    QColor tinted = m_highlightColor;
    tinted.setAlpha(64);
    gradient.setColorAt(0, transparent);
    gradient.setColorAt(1, tinted);
    QPalette framePalette;
    framePalette.setBrush(QPalette::Window, gradient);
    m_actionPanel->setPalette(framePalette);
    m_actionPanel->setAutoFillBackground(true);
    m_mainLayout->addWidget(m_actionPanel);

    for (int action = ActionNew; action < ActionHeading; ++action) {
        m_buttons[action] = buildActionButton(m_actionPanel, QString(),
                                              QLatin1String(imageNames[action]), furtherIconSize);
        m_buttons[action]->setObjectName(QLatin1String(buttonNames[action]));
    }

    m_comment = new QLabel(m_actionPanel);
    m_comment->setObjectName(QStringLiteral("comment"));
    QFont commentFont = m_font;
    commentFont.setPixelSize(12);
    m_comment->setFont(commentFont);
    m_comment->setTextFormat(Qt::RichText);
    m_comment->setWordWrap(true);
    m_comment->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_comment->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);

    auto* separator = new QFrame(m_actionPanel);
    separator->setFrameStyle(QFrame::HLine | QFrame::Sunken);

    m_recommendedLayout = new QHBoxLayout;
    m_recommendedLayout->setObjectName(QStringLiteral("recommendedAction"));
    m_recommendedLayout->setSpacing(16);
    m_furtherActions = new QHBoxLayout;
    m_furtherActions->setObjectName(QStringLiteral("furtherActions"));

    auto* panelLayout = new QVBoxLayout(m_actionPanel);
    panelLayout->setContentsMargins(12, 10, 12, 4);
    panelLayout->setSpacing(6);
    panelLayout->addLayout(m_recommendedLayout, 1);
    panelLayout->addWidget(separator);
    panelLayout->addLayout(m_furtherActions);

    buildFileView();

    // Until the first refresh the page reads as if nothing was found.
    recommend(ActionNew, QString());
    arrangeFurtherActions({ActionConvert, ActionLast, ActionOther});

    connect(m_buttons[ActionOther], &QToolButton::clicked, this, &ActionPage::openOtherFile);
    connect(m_buttons[ActionLast], &QToolButton::clicked, this, &ActionPage::openLastFile);
    connect(m_buttons[ActionNew], &QToolButton::clicked, this,
            QOverload<>::of(&ActionPage::startORVClicked));
}

QToolButton* ActionPage::buildActionButton(QWidget* parent, const QString& text,
                                           const QString& imageName, int size)
{
    auto* button = new QToolButton(parent);
    button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    button->setIcon(QIcon(*PixmapManager::theInstance()->getPixmap(imageName.toStdString())));
    button->setIconSize(QSize(size, size));
    button->setText(text);
    button->setFont(m_font);
    button->setCursor(Qt::PointingHandCursor);
    return button;
}

void ActionPage::setButtonFontSize(QAbstractButton* button, int pixelSize)
{
    QFont buttonFont = button->font();
    buttonFont.setPixelSize(pixelSize);
    button->setFont(buttonFont);
}

// Room for a caption of three lines and two and a half icon widths, so
// that a button keeps its size from state to state and page to page.
void ActionPage::updateButtonMinSize(QAbstractButton* button)
{
    constexpr int captionLines = 3;
    button->setMinimumSize(0, 0);
    QSize size = button->sizeHint();
    const int missingLines = captionLines - int(button->text().count(QLatin1Char('\n'))) - 1;
    if (missingLines > 0)
        size.rheight() += missingLines * button->fontMetrics().lineSpacing();
    size.setWidth(std::max(size.width(), 5 * button->iconSize().width() / 2));
    button->setMinimumSize(size);
}

void ActionPage::buildFileView()
{
    QFont smallFont = m_font;
    smallFont.setPixelSize(11);

    m_folderLabel = new ElidedLabel(this);
    m_folderLabel->setObjectName(QStringLiteral("folderLabel"));
    m_folderLabel->setFont(smallFont);

    m_changeFolderButton = new QToolButton(this);
    m_changeFolderButton->setObjectName(QStringLiteral("changeFolderButton"));
    m_changeFolderButton->setText(QStringLiteral("..."));
    m_changeFolderButton->setToolTip(QStringLiteral("Anderes Verzeichnis wählen"));
    m_changeFolderButton->setFixedSize(18, 16);
    m_changeFolderButton->setAccessibleName(QStringLiteral("Verzeichnis wählen"));
    m_changeFolderButton->setAccessibleDescription(m_changeFolderButton->toolTip());

    m_homeButton = new QToolButton(this);
    m_homeButton->setObjectName(QStringLiteral("homeButton"));
    m_homeButton->setIcon(QIcon(*PixmapManager::theInstance()->getPixmap("tool_home-small")));
    m_homeButton->setIconSize(QSize(16, 16));
    m_homeButton->setFixedSize(22, 18);
    m_homeButton->setAutoRaise(true);
    m_homeButton->setToolTip(QStringLiteral("Ins eigene Steuerfall-Verzeichnis wechseln"));
    m_homeButton->setAccessibleName(QStringLiteral("Standardverzeichnis"));
    m_homeButton->setAccessibleDescription(m_homeButton->toolTip());

    m_searchField = new QLineEdit(this);
    m_searchField->setObjectName(QStringLiteral("searchField"));
    m_searchField->setFont(smallFont);
    m_searchField->setPlaceholderText(QStringLiteral("Steuerfall suchen"));
    m_searchField->setClearButtonEnabled(true);
    m_searchField->setAccessibleName(QStringLiteral("Steuerfälle suchen"));
    // Files dropped here go on to the window, which opens them.
    m_searchField->setAcceptDrops(false);

    m_fileView = new SCListView(this);
    m_fileView->setObjectName(QStringLiteral("fileView"));
    m_fileView->setAccessibleName(QStringLiteral("Steuerfälle"));

    m_emptyFolderLabel = new QLabel(this);
    m_emptyFolderLabel->setObjectName(QStringLiteral("emptyFolderLabel"));
    m_emptyFolderLabel->setFont(smallFont);
    m_emptyFolderLabel->setWordWrap(true);
    m_emptyFolderLabel->setAlignment(Qt::AlignCenter);
    m_emptyFolderLabel->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    m_emptyFolderLabel->setMargin(8);
    m_emptyFolderLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Expanding);
    m_emptyFolderLabel->hide();

    m_openButton = new QPushButton(QStringLiteral("Öffnen"), this);
    m_openButton->setObjectName(QStringLiteral("openButton"));
    m_openButton->setFont(m_font);

    m_overviewButton = new QPushButton(QStringLiteral("Übersicht"), this);
    m_overviewButton->setObjectName(QStringLiteral("overviewButton"));
    m_overviewButton->setFont(m_font);
    m_overviewButton->setToolTip(QStringLiteral("Datei-Übersicht erstellen"));

    auto* folderRow = new QHBoxLayout;
    folderRow->setSpacing(4);
    folderRow->addWidget(m_folderLabel, 1);
    folderRow->addWidget(m_changeFolderButton);
    folderRow->addWidget(m_homeButton);

    auto* buttonColumn = new QVBoxLayout;
    buttonColumn->addWidget(m_openButton);
    buttonColumn->addWidget(m_overviewButton);
    buttonColumn->addStretch(1);

    auto* listRow = new QHBoxLayout;
    listRow->addWidget(m_fileView, 1);
    listRow->addWidget(m_emptyFolderLabel, 1);
    listRow->addLayout(buttonColumn);

    auto* fileView = new QVBoxLayout;
    fileView->setSpacing(2);
    fileView->setContentsMargins(2, 0, 2, 2);
    fileView->addLayout(folderRow);
    fileView->addWidget(m_searchField);
    fileView->addLayout(listRow, 1);
    m_mainLayout->addLayout(fileView, 1);

    connect(m_changeFolderButton, &QToolButton::clicked, this, &ActionPage::changeFolder);
    connect(m_homeButton, &QToolButton::clicked, this, &ActionPage::gotoHomeDataDir);
    connect(m_searchField, &QLineEdit::textChanged, m_fileView, &SCListView::setSearchText);
    connect(m_fileView, &QTreeWidget::itemDoubleClicked, this, &ActionPage::openTreeItem);
    connect(m_fileView, &QTreeWidget::itemSelectionChanged, this, &ActionPage::updateOpenButton);
    connect(m_fileView, &SCListView::listingFinished, this, [this] {
        workDirChanged();
        updateOpenButton();
    });
    connect(m_openButton, &QPushButton::clicked, this, &ActionPage::openCurrentItem);
    connect(m_overviewButton, &QPushButton::clicked, this, &ActionPage::showOverview);
}

void ActionPage::setActionCaption(ModeAction action, const QString& caption)
{
    m_captions[action] = caption;
    if (action == ActionHeading) {
        m_heading->setText(caption);
    } else {
        m_buttons[action]->setText(caption);
        m_buttons[action]->setAccessibleName(caption.simplified());
    }
}

void ActionPage::setActionComment(ModeAction action, const QString& comment)
{
    m_comments[action] = comment;
}

QToolButton* ActionPage::actionButton(ModeAction action) const
{
    return action == ActionHeading ? nullptr : m_buttons[action];
}

QString ActionPage::actionComment(ModeAction action) const
{
    return m_comments[action];
}

QString ActionPage::lastWorkDir() const
{
    return CaseFiles::workFolder();
}

QString ActionPage::getLastFilePath() const
{
    return CaseFiles::existingLastFile();
}

QString ActionPage::getFilePathToConvert() const
{
    // Last year's program keeps its settings where this one does, with its
    // own version number in the path. Without the number in the path there
    // is no such file to look at.
    std::string settingsPath = cNvWinIni::theInstance()->getUserModusIniPath();
    if (!StringFunctions::replaceAll(settingsPath, currentVersion, lastVersion))
        return QString();

    cIniFile lastYearSettings(settingsPath, false, false);
    const std::string recorded = lastYearSettings.GetString("MRUFiles", "0", "");
    if (recorded.empty())
        return QString();

    DMFileName name;
    name.setFullPath(recorded);
    name.makeAbsPath(true);
    std::string path = name.normalizedString();
    StringFunctions::replaceAll(path, thisYear, lastYear);

    const QString result = CrossPlatformApi::toQString(path);
    return QFileInfo(result).isFile() ? result : QString();
}

QStringList ActionPage::parseNameFilters(const QString& fileTypes)
{
    return CaseFiles::parseNameFilters(fileTypes);
}

void ActionPage::updateUI()
{
    updateFileView();

    m_recommendedLayout->removeWidget(m_comment);
    m_recommendedLayout->removeWidget(m_buttons[m_recommended]);
    disconnect(m_buttons[ActionConvert], &QToolButton::clicked, nullptr, nullptr);

    const QString lastFile = getLastFilePath();
    m_fileToConvert = getFilePathToConvert();

    const auto startConvert = QOverload<>::of(&ActionPage::startConvertClicked);
    if (!lastFile.isEmpty()) {
        const QFileInfo file(lastFile);
        recommend(ActionLast, toHtml(m_comments[ActionLast]) + QLatin1String("<br><br>Datei: <b>")
                                  + file.fileName().toHtmlEscaped() + QLatin1String("</b>")
                                  + QLatin1String("<font size=-1><br>Verzeichnis: ")
                                  + CaseFiles::displayedPath(file.absolutePath()).toHtmlEscaped()
                                  + QLatin1String("</font>"));
        arrangeFurtherActions({ActionNew, ActionConvert, ActionOther});
        connect(m_buttons[ActionConvert], &QToolButton::clicked, this, startConvert);
        m_buttons[ActionLast]->setEnabled(true);
    } else if (!m_fileToConvert.isEmpty()) {
        recommend(ActionConvert, toHtml(m_comments[ActionConvert] + m_fileToConvert));
        arrangeFurtherActions({ActionNew, ActionLast, ActionOther});
        connect(m_buttons[ActionConvert], &QToolButton::clicked, this, &ActionPage::openOldFile);
        m_buttons[ActionLast]->setEnabled(false);
    } else {
        recommend(ActionNew, toHtml(m_comments[ActionNew]));
        arrangeFurtherActions({ActionConvert, ActionLast, ActionOther});
        connect(m_buttons[ActionConvert], &QToolButton::clicked, this, startConvert);
        m_buttons[ActionLast]->setEnabled(false);
    }
    chainFocus(focusOrder());
}

QList<QWidget*> ActionPage::focusOrder() const
{
    QList<QWidget*> order{m_buttons[m_recommended]};
    for (int i = 0; i < m_furtherActions->count(); ++i)
        if (QWidget* button = m_furtherActions->itemAt(i)->widget())
            order << button;
    order << m_changeFolderButton << m_homeButton << m_searchField << m_fileView << m_openButton << m_overviewButton;
    return order;
}

void ActionPage::keyPressEvent(QKeyEvent* event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && m_fileView->hasFocus() && m_fileView->currentItem()) {
        openTreeItem(m_fileView->currentItem(), 0);
        return;
    }
    QWidget::keyPressEvent(event);
}

void ActionPage::showEvent(QShowEvent* event)
{
    m_fileView->setWatching(true);
    QWidget::showEvent(event);
}

void ActionPage::hideEvent(QHideEvent* event)
{
    m_fileView->setWatching(false);
    QWidget::hideEvent(event);
}

void ActionPage::recommend(ModeAction action, const QString& commentHtml)
{
    m_recommended = action;
    QToolButton* button = m_buttons[action];
    button->setFont(m_boldFont);
    setButtonFontSize(button, recommendedFontSize);
    button->setIconSize(QSize(recommendedIconSize, recommendedIconSize));
    button->setAutoRaise(false);
    updateButtonMinSize(button);
    m_comment->setText(commentHtml);
    button->setAccessibleDescription(QTextDocumentFragment::fromHtml(commentHtml).toPlainText().simplified());

    m_recommendedLayout->addWidget(button, 0, Qt::AlignVCenter);
    m_recommendedLayout->addWidget(m_comment, 1);
}

// The buttons left to right, a stretch between each two.
void ActionPage::arrangeFurtherActions(std::initializer_list<ModeAction> actions)
{
    while (QLayoutItem* item = m_furtherActions->takeAt(0))
        delete item;
    for (ModeAction action : actions) {
        QToolButton* button = m_buttons[action];
        if (m_furtherActions->count() > 0)
            m_furtherActions->addStretch(1);
        button->setFont(m_font);
        setButtonFontSize(button, furtherFontSize);
        button->setIconSize(QSize(furtherIconSize, furtherIconSize));
        button->setAutoRaise(true);
        button->setAccessibleDescription(QString());
        updateButtonMinSize(button);
        m_furtherActions->addWidget(button);
    }
}

void ActionPage::updateFileView()
{
    m_folder = lastWorkDir();
    m_fileView->init(m_folder, CaseFiles::nameFilters());
    workDirChanged();
    updateOpenButton();
}

void ActionPage::workDirChanged()
{
    const QString folder = CaseFiles::displayedPath(m_folder);
    m_fileView->setToolTip(QStringLiteral("Verzeichnis:\n") + folder);
    m_fileView->setAccessibleDescription(QStringLiteral("Verzeichnis: ") + folder);
    m_folderLabel->setText(QStringLiteral("Verzeichnis: ") + folder);
    m_folderLabel->setToolTip(folder);

    // While the folder is read the list stays in view; the overview waits
    // for the whole listing.
    // A search that matches nothing leaves the list in view.
    const bool listed = m_fileView->topLevelItemCount() > 0 || m_fileView->fileCount() > 0;
    const bool hasFiles = listed || m_fileView->isListing();
    m_emptyFolderLabel->setText(hasFiles ? QString()
                                         : QStringLiteral("Im Verzeichnis »") + folder
                                               + QStringLiteral("« konnten keine Dateien gefunden werden."));
    m_fileView->setVisible(hasFiles);
    m_searchField->setVisible(hasFiles);
    m_emptyFolderLabel->setVisible(!hasFiles);
    m_openButton->setEnabled(hasFiles);
    m_overviewButton->setEnabled(listed && !m_fileView->isListing());
}

// A file name found at the last refresh may be gone by the time the user
// clicks: then the page refreshes instead of sending the name on.
void ActionPage::openLastFile()
{
    const QString path = CaseFiles::lastFile();
    if (QFileInfo(path).isFile())
        emit startORVClicked(path);
    else
        updateUI();
}

void ActionPage::openOtherFile()
{
    FileDialogRequest request;
    request.kind = FileDialogRequest::OpenFile;
    request.parent = this;
    request.caption = QString(m_captions[ActionOther]).replace(QLatin1Char('\n'), QLatin1Char(' '));
    request.directory = lastWorkDir();
    request.filter = CaseFiles::dialogFilter(CaseFiles::fileTypes());
    const QString path = CrossPlatformApi::showFileDialog(request);
    if (!path.isEmpty())
        emit startORVClicked(path);
}

void ActionPage::openOldFile()
{
    if (QFileInfo(m_fileToConvert).isFile())
        emit startConvertClicked(m_fileToConvert);
    else
        updateUI();
}

void ActionPage::openCurrentItem()
{
    if (QTreeWidgetItem* item = m_fileView->currentItem())
        openTreeItem(item, 0);
    else
        openLastFile();
}

// A row whose file has gone since the rows were built sends nothing, nor
// does a name the user chose not to convert: the list is read again instead.
void ActionPage::openTreeItem(QTreeWidgetItem* item, int)
{
    const CaseFolder::Entry* listed = m_fileView->entryOf(item);
    if (!listed) {
        updateFileView();
        return;
    }
    // A copy: the list may go on filling while a box is open.
    const CaseFolder::Entry entry = *listed;
    const QString path = CaseFiles::openablePath(m_folder, entry, this);
    if (path.isEmpty() || entry.latin1Name)
        updateFileView();
    if (!path.isEmpty())
        emit startORVClicked(path);
}

void ActionPage::updateOpenButton()
{
    m_openButton->setEnabled(!m_fileView->selectedItems().isEmpty());
}

void ActionPage::changeFolder()
{
    FileDialogRequest request;
    request.kind = FileDialogRequest::ExistingDirectory;
    request.parent = this;
    request.caption = QStringLiteral("Verzeichnis wählen");
    request.directory = lastWorkDir();
    const QString folder = CrossPlatformApi::showFileDialog(request);
    if (folder.isEmpty())
        return;
    CaseFiles::storeWorkFolder(folder);
    updateFileView();
}

void ActionPage::gotoHomeDataDir()
{
    CaseFiles::resetWorkFolderToHome();
    updateFileView();
}

void ActionPage::showOverview()
{
    CaseFiles::showOverview(m_folder, m_fileView->fileNames(), m_captions[ActionHeading]);
}
