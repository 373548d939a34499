#include "QuickViewWidget.h"

#include "ApplicationInfo.h"
#include "ConfigText.h"
#include "CrossPlatformApi.h"
#include "DMFileName.h"
#include "QuickView.h"
#include "SCColors.h"
#include "WordWrap.h"

#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QStackedLayout>
#include <QTextEdit>
#include <QVBoxLayout>

namespace {

const char viewerName[] = "Dmqv32.exe";
const char sampleFolderName[] = "Musterf\xE4lle";

const QString fileLabelPlaceholder = QStringLiteral("<Filename>");
const QString personsPlaceholder = QStringLiteral("<Personendaten>");
const QString commentPlaceholder = QStringLiteral("<Kommentar>");
const int tooltipWidth = 200;

void showBox(QWidget* parent, QMessageBox::Icon icon, const QString& title, const QString& text)
{
    MessageBoxRequest request;
    request.icon = icon;
    request.title = title;
    request.text = text;
    request.parent = parent;
    CrossPlatformApi::showMessageBox(request);
}

void showViewerError(QWidget* parent, const QString& reason)
{
    showBox(parent, QMessageBox::Critical, QStringLiteral("Dateiinformationen"),
            QStringLiteral("Fehler beim Anzeigen der Detail-Informationen!\n") + reason);
}

// The item's value, or the fallback when the file does not tell it.
QString itemOr(const std::string& key, const QString& fallback)
{
    const std::string value = QuickView::TheInstance()->getItem(key);
    return value.empty() || value == "?" ? fallback : QString::fromLatin1(value.c_str());
}

QTextEdit* createReadOnlyField(const QString& objectName, int height, QWidget* parent)
{
    auto* field = new QTextEdit(parent);
    field->setObjectName(objectName);
    field->setReadOnly(true);
    field->setFixedHeight(height);
    return field;
}

} // namespace

QuickViewWidget::QuickViewWidget(QWidget* parent)
    : QWidget(parent)
{
    applyPalette();
    m_pages = new QStackedLayout(this);
    m_noFilePage = createNoFilePage();
    m_informationPage = createInformationPage();
    m_pages->addWidget(m_noFilePage);
    m_pages->addWidget(m_informationPage);
}

void QuickViewWidget::applyPalette()
{
    const QColor designBlue = SCColors::getDesignDarkBlue();
    QPalette palette = this->palette();
    palette.setColor(QPalette::Active, QPalette::WindowText, designBlue);
    palette.setColor(QPalette::Active, QPalette::HighlightedText, designBlue.lighter(200));
    palette.setColor(QPalette::Link, designBlue);
    setPalette(palette);
    setAutoFillBackground(true);

    QFont boldFont = font();
    boldFont.setWeight(QFont::Bold);
    setFont(boldFont);
}

QWidget* QuickViewWidget::createNoFilePage()
{
    const QString sampleFolder =
        CrossPlatformApi::toQString(cApplicationInfo::theInstance()->getFilenameInAppDir(sampleFolderName));
    auto* page = new QWidget(this);
    page->setObjectName(QStringLiteral("NoFilePage"));
    auto* hint = new QLabel(
        QStringLiteral("<center><br><b>Keine Datei ausgewählt.<br><br>Wählen Sie eine Datei, um weitere "
                       "Informationen über den Steuerfall zu erhalten.</b></center><br><br><br>Zum "
                       "Kennenlernen der Orvane-Erklärung finden Sie Musterfälle im Verzeichnis:<br><br>»")
            + sampleFolder.toHtmlEscaped() + QStringLiteral("«"),
        page);
    hint->setObjectName(QStringLiteral("SampleCasesHint"));
    hint->setTextFormat(Qt::RichText);
    hint->setWordWrap(true);
    hint->setAlignment(Qt::AlignTop | Qt::AlignLeft);

    auto* layout = new QVBoxLayout(page);
    layout->addWidget(hint);
    layout->addStretch();
    return page;
}

QWidget* QuickViewWidget::createInformationPage()
{
    auto* page = new QWidget(this);
    page->setObjectName(QStringLiteral("InformationPage"));
    auto* heading = new QLabel(QStringLiteral("Informationen zur Datei:"), page);
    m_fileLabel = new QLabel(page);
    m_fileLabel->setObjectName(QStringLiteral("FileLabel"));
    m_fileLabel->setTextFormat(Qt::PlainText);
    m_fileLabel->setWordWrap(true);
    m_persons = createReadOnlyField(QStringLiteral("PersonsField"), 72, page);
    m_comment = createReadOnlyField(QStringLiteral("CommentField"), 125, page);
    showPlaceholders();

    m_moreButton = new QPushButton(QStringLiteral("Mehr..."), page);
    m_moreButton->setObjectName(QStringLiteral("MoreButton"));
    m_moreButton->setFixedHeight(25);
    m_moreButton->setToolTip(configText("StartCenter.HelpText", "Mehr"));
    connect(m_moreButton, &QPushButton::clicked, this, &QuickViewWidget::openQuickView);

    auto* layout = new QVBoxLayout(page);
    layout->addWidget(heading);
    layout->addWidget(m_fileLabel);
    layout->addWidget(m_persons);
    layout->addWidget(m_comment);
    layout->addWidget(m_moreButton);
    layout->addStretch();
    return page;
}

// Nothing of an earlier file stays in view when a file cannot be read.
void QuickViewWidget::showPlaceholders()
{
    m_fileLabel->setText(fileLabelPlaceholder);
    m_fileLabel->setToolTip(QString());
    m_persons->setPlainText(personsPlaceholder);
    m_comment->setPlainText(commentPlaceholder);
}

void QuickViewWidget::setFile(const QString& fileName)
{
    if (fileName.isEmpty()) {
        m_pages->setCurrentWidget(m_noFilePage);
        return;
    }
    m_pages->setCurrentWidget(m_informationPage);
    m_path = DMFileName(fileName.toLatin1().toStdString()).compose();

    if (!QuickView::TheInstance()->setFile(m_path)) {
        showPlaceholders();
        showBox(this, QMessageBox::Information, QStringLiteral("Dateiinfo"),
                QStringLiteral("Die Dateiinformationen können aufgrund eines Fehlers leider nicht "
                               "angezeigt werden!"));
        return;
    }

    const QFileInfo file(CrossPlatformApi::toQString(m_path));
    m_fileLabel->setText(QStringLiteral("»") + file.fileName() + QStringLiteral("«"));
    m_fileLabel->setToolTip(wordWrap(file.absoluteFilePath(), tooltipWidth, m_fileLabel->font(), true));
    m_persons->setPlainText(
        itemOr(DMDataFileInfo::keyPerson, QStringLiteral("Keine Angaben zur Person vorhanden.")));
    m_comment->setPlainText(
        itemOr(DMDataFileInfo::keyComment, QStringLiteral("Keine weiteren Angaben vorhanden.")));
}

void QuickViewWidget::openQuickView()
{
    const std::string viewer = cApplicationInfo::theInstance()->getFilenameInAppDir(viewerName);
    if (!QFileInfo::exists(CrossPlatformApi::toQString(viewer))) {
        showViewerError(this, QStringLiteral("Die QuickView-Anwendung kann nicht gestartet werden."));
        return;
    }
    if (!CrossPlatformApi::exec(viewer, '"' + m_path + '"', 0))
        showViewerError(this, QStringLiteral("Die QuickView-Anwendung konnte nicht gestartet werden."));
}
