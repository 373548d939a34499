#include "ModePage.h"

#include "CaseFiles.h"
#include "ConfigText.h"
#include "CrossPlatformApi.h"
#include "DirSelectDialog.h"
#include "ElidedLabel.h"
#include "HoverLabel.h"
#include "PixmapManager.h"
#include "SCColors.h"
#include "SCListView.h"

#include <QApplication>
#include <QFileInfo>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLinearGradient>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr int entryIconSize = 32;

QIcon image(const char* name)
{
    return QIcon(*PixmapManager::theInstance()->getPixmap(name));
}

QToolButton* iconButton(const char* imageName, int size, QWidget* parent)
{
    auto* button = new QToolButton(parent);
    button->setIcon(image(imageName));
    button->setIconSize(QSize(size, size));
    button->setAutoRaise(true);
    button->setCursor(Qt::PointingHandCursor);
    return button;
}

} // namespace

ModePage::ModePage(QWidget* parent)
    : QWidget(parent)
{
    initUI();
}

ModePage::~ModePage() = default;

void ModePage::initUI()
{
    // Only the roles set here override what the page inherits.
    m_highlightColor = palette().color(QPalette::HighlightedText);
    QPalette pagePalette;
    const QColor blue = SCColors::getDesignDarkBlue();
    pagePalette.setColor(QPalette::Active, QPalette::WindowText, blue);
    pagePalette.setColor(QPalette::Active, QPalette::HighlightedText, blue.lighter(200));
    pagePalette.setColor(QPalette::Link, blue);
    setPalette(pagePalette);

    m_font = parentWidget() ? parentWidget()->font() : font();
    m_font.setWeight(QFont::Normal);
    m_boldFont = m_font;
    m_boldFont.setWeight(QFont::Bold);
    setFont(m_font);

    m_layout = new QVBoxLayout(this);
    m_layout->setSpacing(0);
    m_layout->setContentsMargins(4, 4, 4, 4);

    m_heading = new QLabel(this);
    m_heading->setObjectName(QStringLiteral("heading"));
    QFont headingFont = m_boldFont;
    headingFont.setPixelSize(16);
    m_heading->setFont(headingFont);

    m_entries[FunctionNew] = createEntry(FunctionNew, "New File", "neu-small", "NeuerFall");
    m_entries[FunctionConvert] =
        createEntry(FunctionConvert, "Convert Convert", "hilfe_Datenuebernahme", "Uebernahme");
    m_entries[FunctionLast] = createEntry(FunctionLast, "Last File", "oeffnen-small", "LetzterFall");
    createOtherFilesEntry();

    connect(m_entries[FunctionNew].icon, &QToolButton::clicked, this,
            QOverload<>::of(&ModePage::startORVClicked));
    connect(m_entries[FunctionNew].caption, QOverload<>::of(&HoverLabel::clicked), this,
            QOverload<>::of(&ModePage::startORVClicked));
    connect(m_entries[FunctionConvert].icon, &QToolButton::clicked, this,
            &ModePage::startConvertClicked);
    connect(m_entries[FunctionConvert].caption, QOverload<>::of(&HoverLabel::clicked), this,
            &ModePage::startConvertClicked);
    connect(m_entries[FunctionLast].icon, &QToolButton::clicked, this, &ModePage::openLastFile);
    connect(m_entries[FunctionLast].caption, QOverload<>::of(&HoverLabel::clicked), this,
            &ModePage::openLastFile);

    for (int divider = 0; divider < 3; ++divider)
        addDivider();
    layoutEntries();
    // The heading is no entry: it goes on top once the entries are in place.
    m_layout->insertWidget(0, m_heading);
    m_layout->insertSpacing(1, 6);
}

ModePage::Entry ModePage::createEntry(ModeFunction function, const char* objectName,
                                      const char* imageName, const char* toolTipKey)
{
    Entry entry;
    entry.frame = new QFrame(this);
    entry.frame->setObjectName(QLatin1String(objectName));
    entry.caption = new HoverLabel(QString(), entry.frame, function);
    entry.caption->setFont(m_boldFont);
    entry.icon = iconButton(imageName, entryIconSize, entry.frame);

    const QString toolTip = configText("ToolTips", toolTipKey);
    entry.caption->setToolTip(toolTip);
    entry.icon->setToolTip(toolTip);

    auto* text = new QVBoxLayout;
    text->setSpacing(2);
    text->addStretch(1);
    text->addWidget(entry.caption);
    if (function == FunctionLast) {
        m_lastFileLabel = new QLabel(entry.frame);
        m_lastFileLabel->setObjectName(QStringLiteral("lastFileLabel"));
        text->addWidget(m_lastFileLabel);
    }
    text->addStretch(1);

    auto* row = new QHBoxLayout(entry.frame);
    row->setContentsMargins(6, 3, 6, 3);
    row->setSpacing(10);
    row->addWidget(entry.icon);
    row->addLayout(text, 1);
    return entry;
}

void ModePage::createOtherFilesEntry()
{
    Entry& entry = m_entries[FunctionOther];
    entry.frame = new QFrame(this);
    entry.frame->setObjectName(QStringLiteral("Other Files"));
    entry.caption = new HoverLabel(QString(), entry.frame, FunctionOther);
    entry.caption->setFont(m_boldFont);
    entry.icon = iconButton("sc_weitere", entryIconSize, entry.frame);

    m_fileView = new SCListView(entry.frame);
    m_fileView->setObjectName(QStringLiteral("FileView"));

    m_folderLabel = new ElidedLabel(entry.frame);
    m_folderLabel->setObjectName(QStringLiteral("folderLabel"));

    m_noFileLabel = new QLabel(entry.frame);
    m_noFileLabel->setObjectName(QStringLiteral("noFileLabel"));
    m_noFileLabel->setWordWrap(true);
    m_noFileLabel->setAlignment(Qt::AlignCenter);
    m_noFileLabel->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    m_noFileLabel->setMargin(8);
    m_noFileLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Expanding);
    m_noFileLabel->hide();

    m_openButton = new QPushButton(QStringLiteral("Öffnen"), entry.frame);
    m_openButton->setObjectName(QStringLiteral("openButton"));
    m_openButton->setToolTip(configText("StartCenter.HelpText", "Oeffnen"));

    m_selectFolderButton = new QToolButton(entry.frame);
    m_selectFolderButton->setObjectName(QStringLiteral("selectFolderButton"));
    m_selectFolderButton->setText(QStringLiteral("..."));
    m_selectFolderButton->setToolTip(QStringLiteral("Anderes Verzeichnis wählen"));

    m_homeButton = iconButton("home", 16, entry.frame);
    m_homeButton->setObjectName(QStringLiteral("homeButton"));
    m_homeButton->setToolTip(QStringLiteral("Ins eigene Steuerfall-Verzeichnis wechseln"));

    m_overviewButton = iconButton("sc_overview", 16, entry.frame);
    m_overviewButton->setObjectName(QStringLiteral("overviewButton"));
    m_overviewButton->setToolTip(QStringLiteral("Datei-Übersicht erstellen"));

    auto* captionRow = new QHBoxLayout;
    captionRow->setSpacing(10);
    captionRow->addWidget(entry.icon);
    captionRow->addWidget(entry.caption, 1);

    auto* folderRow = new QHBoxLayout;
    folderRow->setSpacing(4);
    folderRow->addWidget(m_folderLabel, 1);
    folderRow->addWidget(m_selectFolderButton);
    folderRow->addWidget(m_homeButton);
    folderRow->addWidget(m_overviewButton);
    folderRow->addWidget(m_openButton);

    auto* layout = new QVBoxLayout(entry.frame);
    layout->setContentsMargins(6, 3, 6, 3);
    layout->setSpacing(3);
    layout->addLayout(captionRow);
    layout->addWidget(m_fileView, 1);
    layout->addWidget(m_noFileLabel, 1);
    layout->addLayout(folderRow);

    connect(m_fileView, &QTreeWidget::currentItemChanged, this,
            [this] { fileSelected(m_fileView->selectedFileName()); });
    connect(m_fileView, &QAbstractItemView::doubleClicked, this, &ModePage::openSelectedFile);
    connect(m_fileView, &SCListView::listingFinished, this, &ModePage::updateNoFileMessage);
    connect(m_openButton, &QPushButton::clicked, this, &ModePage::openSelectedFile);
    connect(m_selectFolderButton, &QToolButton::clicked, this, &ModePage::selectDirectory);
    connect(m_homeButton, &QToolButton::clicked, this, &ModePage::gotoHomeDataDir);
    connect(m_overviewButton, &QToolButton::clicked, this, &ModePage::showOverview);
}

void ModePage::addDivider()
{
    auto* divider = new QLabel(this);
    divider->setScaledContents(true);
    divider->setPixmap(*PixmapManager::theInstance()->getPixmap("sc_divider"));
    divider->setFixedHeight(2);
    m_layout->addStretch(1);
    m_layout->addWidget(divider);
    m_layout->addStretch(1);
}

// Between the three dividers (stretch, picture, stretch each):
// new file, divider, convert, divider, last file, divider, other files.
void ModePage::layoutEntries()
{
    m_layout->insertWidget(0, m_entries[FunctionNew].frame);
    m_layout->insertWidget(4, m_entries[FunctionConvert].frame);
    m_layout->insertWidget(8, m_entries[FunctionLast].frame);
    m_layout->addWidget(m_entries[FunctionOther].frame, 100);
}

void ModePage::setFunctionCaption(ModeFunction function, const QString& caption)
{
    m_captions[function] = caption;
    getLabelByFunction(function)->setText(caption);
}

void ModePage::enableFunction(ModeFunction function, bool enabled)
{
    if (QFrame* frame = getFrameByFunction(function))
        frame->setEnabled(enabled);
}

QFrame* ModePage::getFrameByFunction(ModeFunction function) const
{
    return function >= FunctionNew && function < FunctionHeading ? m_entries[function].frame : nullptr;
}

QLabel* ModePage::getLabelByFunction(ModeFunction function) const
{
    if (function == FunctionHeading)
        return m_heading;
    return function >= FunctionNew && function < FunctionHeading ? m_entries[function].caption
                                                                  : nullptr;
}

void ModePage::highlightFunction(ModeFunction function, bool on)
{
    QFrame* frame = getFrameByFunction(function);
    if (!frame)
        return;

    QFont captionFont = m_boldFont;
    if (on) {
        if (captionFont.pointSizeF() > 0)
            captionFont.setPointSizeF(captionFont.pointSizeF() + 2);
        else
            captionFont.setPixelSize(captionFont.pixelSize() + 2);
    }
    m_entries[function].caption->setFont(captionFont);

    if (on) {
        QColor strong = m_highlightColor;
        strong.setAlpha(128);
        QColor clear = m_highlightColor;
        clear.setAlpha(0);
        QLinearGradient gradient(0, 0, 1, 0);
        gradient.setCoordinateMode(QGradient::ObjectBoundingMode);
        gradient.setColorAt(0, strong);
        gradient.setColorAt(1, clear);
        QPalette framePalette;
        framePalette.setBrush(QPalette::Window, gradient);
        frame->setPalette(framePalette);
    }
    frame->setAutoFillBackground(on);
}

QString ModePage::lastWorkDir() const
{
    return CaseFiles::workFolder();
}

QStringList ModePage::parseNameFilters(const QString& fileTypes)
{
    return CaseFiles::parseNameFilters(fileTypes);
}

void ModePage::fileSelected(const QString& name)
{
    emit selectedFile(name);
}

// The name is handed on without its extension; the tax program completes
// it. A name the tax program cannot open is converted first, if the user
// agrees.
void ModePage::openSelectedFile()
{
    const QString name = m_fileView->selectedFileName();
    if (name.isEmpty())
        return;
    const CaseFolder::Entry* entry = m_fileView->entryOf(m_fileView->currentItem());
    if (entry && entry->latin1Name) {
        // A copy: the list may go on filling while the box is open.
        const CaseFolder::Entry latin1 = *entry;
        const bool renamed = !CaseFiles::openablePath(lastWorkDir(), latin1, this).isEmpty();
        m_fileView->updateList();
        if (!renamed)
            return;
    }
    emit startORVClicked(name);
}

// The entry is disabled when the file is missing; this page hands on what
// the settings record.
void ModePage::openLastFile()
{
    emit startORVClicked(CaseFiles::lastFile());
}

void ModePage::selectDirectory()
{
    QApplication::setOverrideCursor(Qt::WaitCursor);
    DirSelectDialog dialog(this, Qt::WindowFlags());
    dialog.setFileFilter(CaseFiles::nameFilters());
    dialog.setDirectory(lastWorkDir());
    QApplication::restoreOverrideCursor();

    if (dialog.exec() != QDialog::Accepted)
        return;
    const QString folder = dialog.directory();
    if (folder.isEmpty())
        return;
    CaseFiles::storeWorkFolder(folder);
    workDirChanged();
}

void ModePage::gotoHomeDataDir()
{
    if (CaseFiles::resetWorkFolderToHome())
        workDirChanged();
}

void ModePage::showOverview()
{
    CaseFiles::showOverview(lastWorkDir(), m_fileView->fileNames(), m_captions[FunctionHeading]);
}

void ModePage::workDirChanged()
{
    updateFileView();
    updateLastFileLabel();
    updateHighLight();
}

void ModePage::updateFileView()
{
    const QString folder = lastWorkDir();
    m_fileView->setNameFilters(CaseFiles::nameFilters());
    m_fileView->setRootDir(folder);

    const QString shown = CaseFiles::displayedPath(folder);
    m_folderLabel->setText(QStringLiteral("Verzeichnis: ") + shown);
    m_folderLabel->setToolTip(shown);
    m_fileView->setToolTip(configText("ToolTips", "AndereFaelle").replace(QLatin1Char('\n'),
                                                                         QLatin1String("<br>")));
    updateNoFileMessage();
}

void ModePage::updateNoFileMessage()
{
    const bool empty = m_fileView->topLevelItemCount() == 0 && !m_fileView->isListing();
    m_noFileLabel->setText(
        QStringLiteral("Aktueller Ordner:\n»") + CaseFiles::displayedPath(lastWorkDir())
        + QStringLiteral("«\n\nFür den aktuellen Programm-Modus haben Sie in diesem Ordner bisher "
                         "keine Steuerfälle gespeichert."));
    m_noFileLabel->setVisible(empty);
    m_fileView->setVisible(!empty);
    m_openButton->setEnabled(!empty);
    m_overviewButton->setEnabled(!empty && !m_fileView->isListing());
}

void ModePage::updateLastFileLabel()
{
    const QString path = CaseFiles::lastFile();
    const QFileInfo file(path);
    const QString shownPath = CaseFiles::displayedPath(path);

    if (path.isEmpty()) {
        m_reportedMissingFile.clear();
        m_lastFileLabel->clear();
        m_lastFileLabel->setToolTip(QString());
        enableFunction(FunctionLast, false);
    } else if (file.isFile()) {
        m_reportedMissingFile.clear();
        m_lastFileLabel->setText(QStringLiteral("»") + file.fileName() + QStringLiteral("«"));
        m_lastFileLabel->setToolTip(shownPath);
        enableFunction(FunctionLast, true);
    } else {
        if (m_reportedMissingFile != path) {
            m_reportedMissingFile = path;
            MessageBoxRequest box;
            box.icon = QMessageBox::Information;
            box.parent = this;
            box.title = QStringLiteral("Datei nicht gefunden");
            box.text =
                QStringLiteral("Ihr zuletzt bearbeiteter Steuerfall »") + file.fileName()
                + QStringLiteral("« kann nicht gefunden werden!\n(") + shownPath
                + QStringLiteral(")\n\nDie Datei wurde eventuell gelöscht oder verschoben.\n"
                                 "Falls Sie den Steuerfall jedoch auf einem mobilen Datenträger "
                                 "gespeichert haben, wie zum Beispiel einem USB-Stick oder einer "
                                 "Diskette, legen Sie den Datenträger nun ein und öffnen Sie ihn "
                                 "unter »")
                + m_captions[FunctionOther]
                + QStringLiteral("«.\nAnschließend können Sie Ihren Steuerfall in der Dateiliste "
                                 "auswählen.\n");
            CrossPlatformApi::showMessageBox(box);
        }
        m_lastFileLabel->setText(QStringLiteral("Datei nicht gefunden!"));
        m_lastFileLabel->setToolTip(shownPath);
        enableFunction(FunctionLast, false);
    }
}

void ModePage::updateHighLight()
{
    const bool lastFileExists = !CaseFiles::existingLastFile().isEmpty();
    highlightFunction(FunctionLast, lastFileExists);
    highlightFunction(FunctionNew, !lastFileExists);
}

// The settings may have changed while the page was hidden (the tax program
// writes the last file and the working folder), so showing re-reads them.
void ModePage::showEvent(QShowEvent* event)
{
    workDirChanged();
    emit selectedFile(m_fileView->selectedFileName());
    QWidget::showEvent(event);
}
