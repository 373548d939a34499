#include "OverviewPage.h"

#include "CrossPlatformApi.h"
#include "DMDataFileInfo.h"
#include "DMFileName.h"
#include "FilePath.h"
#include "FolderManager.h"
#include "OverviewMarkup.h"

#include <QApplication>
#include <QDateTime>
#include <QEventLoop>
#include <QFileInfo>
#include <QProgressDialog>
#include <QThread>
#include <QTimer>
#include <QUrl>

namespace {

const QString overviewTitle = QStringLiteral("Datei-Übersicht");

void showBox(QMessageBox::Icon icon, const QString& title, const QString& text)
{
    MessageBoxRequest request;
    request.icon = icon;
    request.title = title;
    request.text = text;
    CrossPlatformApi::showMessageBox(request);
}

// Linux file systems often keep no birth time; the time of the last status
// change stands in for it then.
QDateTime creationTime(const QFileInfo& file)
{
    const QDateTime born = file.birthTime();
    return born.isValid() ? born : file.metadataChangeTime();
}

// A value read from a case file, or the fallback when the file has none.
QString caseFileValue(const DMDataFileInfo& info, const char* key, const QString& fallback)
{
    const std::string value = info.getStringValue(key);
    if (value.empty() || value == "?")
        return fallback;
    return QString::fromLatin1(value.data(), qsizetype(value.size()));
}

// Generated documents go to the user's cache folder, the installation's
// "<COMMONCACHE>", so that the case folder keeps only the user's own files.
QString overviewFolder()
{
    FolderManager::theInstance();   // defines the system folders
    const char* const symbolic = DMFileName::getGlobalFileEnvironment().hasSymbol("COMMONCACHE")
                                     ? "<COMMONCACHE>"
                                     : "<SYS_LOCAL_CACHE>/Start-Center";
    const FilePath folder(DMFileName(symbolic).compose() + '/');
    folder.makeDir();
    return QString::fromLatin1(folder.getPath().c_str());
}

// The document is Latin-1: every other character goes in as a numeric
// character reference, so that no name or comment loses a letter.
QByteArray latin1WithCharacterReferences(const QString& text)
{
    QByteArray bytes;
    bytes.reserve(text.size());
    for (const char32_t c : text.toUcs4()) {
        if (c <= 0xFF)
            bytes += char(c);
        else
            bytes += "&#" + QByteArray::number(uint(c)) + ';';
    }
    return bytes;
}

} // namespace

OverviewPage::OverviewPage() = default;

OverviewPage::~OverviewPage() = default;

void OverviewPage::setTaxFiles(const QString& folder, const QStringList& fileNames)
{
    m_folder = folder;
    m_fileNames = fileNames;
    m_writeNeeded = true;
}

void OverviewPage::setCaption(const QString& caption)
{
    m_caption = caption;
}

void OverviewPage::show()
{
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    if (m_writeNeeded) {
        if (m_fileNames.isEmpty()) {
            QGuiApplication::restoreOverrideCursor();
            showBox(QMessageBox::Warning, overviewTitle,
                    QStringLiteral("Im aktuellen Verzeichnis befinden sich keine Dateien dieses Modus."));
            return;
        }
        m_file.setFileName(overviewFolder() + m_caption + QStringLiteral(".html"));
        if (!m_file.open(QIODevice::WriteOnly | QIODevice::Text)) {
            QGuiApplication::restoreOverrideCursor();
            showBox(QMessageBox::Critical, overviewTitle,
                    QStringLiteral("Die HTML-Datei zur Steuerfall-Übersicht konnte nicht erstellt werden!"));
            return;
        }
        const bool complete = writeInBackground();
        if (!complete) {
            m_file.cancelWriting();
            m_file.commit();   // removes the unfinished document
            QGuiApplication::restoreOverrideCursor();
            return;
        }
        if (!m_file.commit()) {
            QGuiApplication::restoreOverrideCursor();
            showBox(QMessageBox::Critical, overviewTitle,
                    QStringLiteral("Die HTML-Datei zur Steuerfall-Übersicht konnte nicht erstellt werden!"));
            return;
        }
        QFile::setPermissions(m_file.fileName(), QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        m_writeNeeded = false;
    }
    QGuiApplication::restoreOverrideCursor();

    const QString path = m_file.fileName();
    const QUrl url = path.startsWith(QLatin1String("file:")) ? QUrl(path) : QUrl::fromLocalFile(path);
    if (!CrossPlatformApi::openUrl(url)) {
        showBox(QMessageBox::Critical, QStringLiteral("Dateiübersicht anzeigen"),
                QStringLiteral("Sie haben keinen Internet-Browser installiert!\n"
                               "Die Dateiübersicht kann nicht angezeigt werden.\n"
                               "Sie finden die Übersichts-Datei unter\n")
                    + path);
    }
}

bool OverviewPage::writeInBackground()
{
    m_rowsWritten = 0;
    m_cancelRequested = false;

    QProgressDialog progress(QStringLiteral("Die Datei-Übersicht wird erstellt ..."),
                             QStringLiteral("Abbrechen"), 0, int(m_fileNames.size()),
                             QApplication::activeWindow());
    progress.setWindowTitle(overviewTitle);
    progress.setWindowModality(Qt::ApplicationModal);
    progress.setMinimumDuration(400);
    progress.setAutoClose(false);
    progress.setAutoReset(false);
    QObject::connect(&progress, &QProgressDialog::canceled, [this] { m_cancelRequested = true; });

    QTimer poll;
    poll.setInterval(50);
    QObject::connect(&poll, &QTimer::timeout, [&] { progress.setValue(m_rowsWritten); });

    QEventLoop loop;
    // The document is made as text and written as Latin-1 with character
    // references for everything beyond it, all on the worker.
    std::unique_ptr<QThread> worker(QThread::create([this] {
        QString document;
        m_stream.setString(&document);
        writeHTML();
        m_stream.flush();
        m_stream.setString(nullptr);
        m_file.write(latin1WithCharacterReferences(document));
    }));
    QObject::connect(worker.get(), &QThread::finished, &loop, &QEventLoop::quit);
    worker->start();
    poll.start();
    loop.exec();
    worker->wait();
    return !m_cancelRequested;
}

void OverviewPage::writeHTML()
{
    m_stream << "<!DOCTYPE HTML PUBLIC -//W3C//DTD HTML 4.01 Transitional//EN "
                "http://www.w3.org/TR/html4/loose.dtd>"
             << "<HTML>"
             << "<HEAD>"
             << "  <TITLE>Datei-&Uuml;bersicht</TITLE>"
             << "  <META HTTP-EQUIV=Content-Type CONTENT=text/html; charset=ISO-8859-1>"
             << "  <META NAME=generator CONTENT=Marvendo Start-Center>"
             << "  <META NAME=author CONTENT=Marvendo>"
             << "  <META NAME=description CONTENT=&Uuml;bersicht der Steuerf&auml;lle eines Modus.>"
             << "  <META NAME=keywords CONTENT=>"
             << "</HEAD>"
             << "<BODY BGCOLOR=#FFFFFF TEXT=#000000 LINK=#0000FF VLINK=#800080 ALINK=#FF0000 "
                "style=font-family:sans-serif; font-size:100%>"
             << "<basefont face=Frutiger, Arial, Verdana, Swiss, Sans-Serif size=2>"
             << "<H2>Marvendo Start-Center</H2>"
             << "<H3>&Uuml;bersicht der " << convertToHTML(m_caption) << "</H3>"
             << "<HR>"
             << "<P><B>Verzeichnis:</B> " << convertToHTML(escapeMarkup(m_folder, Markup::Escape))
             << "</P>"
             << "<TABLE BORDER=1 CELLSPACING=0 CELLPADDING=5 WIDTH=100% style=font-size:100%>"
             << "<TR ALIGN=left>"
             << "  <TH>Datei</TH>"
             << "  <TH>Informationen zum Steuerfall</TH>"
             << "  <TH>Kommentar</TH>"
             << "</TR>";
    writeFileInfo();
    m_stream << "</TABLE>"
             << "<P><FONT SIZE=1>";
    if (!m_file.fileName().isEmpty())
        m_stream << "Datei: " << convertToHTML(escapeMarkup(m_file.fileName(), Markup::Escape))
                 << "<BR>";
    const QDateTime now = QDateTime::currentDateTime();
    m_stream << "Erstellt am " << now.toString(QStringLiteral("dd.MM.yyyy")) << " um "
             << now.toString(QStringLiteral("hh:mm")) << "h"
             << "<br><br>Marvendo Start-Center"
             << "<br>Copyright &copy; Marvendo. Alle Rechte vorbehalten."
             << "</FONT></P>"
             << "</BODY>"
             << "</HTML>";
}

void OverviewPage::writeFileInfo()
{
    for (const QString& fileName : m_fileNames) {
        if (m_cancelRequested)
            return;
        ++m_rowsWritten;
        const QFileInfo file(m_folder + fileName);
        if (!file.exists())
            continue;
        m_stream << "<TR VALIGN=top>"
                 << "<TD>" << escapeMarkup(fileName, Markup::Escape) << "<BR>"
                 << "<FONT SIZE=1>("
                 << creationTime(file).toString(QStringLiteral("dd.MM.yyyy hh:mm"))
                 << ")</FONT>"
                 << "</TD>";

        DMDataFileInfo info;
        if (!info.readFile(file.filePath().toLatin1().toStdString()))
            continue;
        const QString person = caseFileValue(info, DMDataFileInfo::keyPerson,
                                              QStringLiteral("Keine Angaben zur Person vorhanden."));
        const QString comment = caseFileValue(info, DMDataFileInfo::keyComment,
                                               QStringLiteral("Keine weiteren Angaben vorhanden."));
        m_stream << "<TD>" << convertToHTML(escapeMarkup(person, Markup::KeepSimpleTags)) << "</TD>"
                 << "<TD>" << convertToHTML(escapeMarkup(comment, Markup::KeepSimpleTags))
                 << "</TD>"
                 << "</TR>";
    }
}

QString OverviewPage::convertToHTML(const QString& text)
{
    static const std::pair<QString, QLatin1String> replacements[] = {
        {QStringLiteral("Ä"), QLatin1String("&Auml;")}, {QStringLiteral("Ö"), QLatin1String("&Ouml;")},
        {QStringLiteral("Ü"), QLatin1String("&Uuml;")}, {QStringLiteral("ä"), QLatin1String("&auml;")},
        {QStringLiteral("ö"), QLatin1String("&ouml;")}, {QStringLiteral("ü"), QLatin1String("&uuml;")},
        {QStringLiteral("ß"), QLatin1String("&szlig;")}, {QStringLiteral("\n"), QLatin1String("<BR>")},
        {QStringLiteral("\r"), QLatin1String("")},
    };
    QString result = text;
    for (const auto& [character, entity] : replacements)
        result.replace(character, entity);
    return result;
}
