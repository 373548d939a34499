// A stand-in for the tax program of the sample installation, so that the
// launcher can be tried for real. It lies in the installation at
// "StartCenter"/"ORVExecutable" (ORV.app/Contents/MacOS/ORV) and takes the
// launcher's command line:
//
//   ORV <mode parameter> -n          a new case file
//   ORV <mode parameter> <file>      open that case file
//   ORV <mode parameter> -c [file]   take over last year's data (of that file)
//
// The window shows what it was asked to do; "Speichern" writes a case file
// into the mode's working folder and records it as the mode's last file, so
// the launcher recommends it afterwards. Closing the window ends the program.
//
// Without a window, for tests and scripts (environment variables):
//   ORV_DEMO_HEADLESS=1      no window: save, then end
//   ORV_DEMO_DELAY_MS=n      wait n ms before saving
//   ORV_DEMO_EXIT_CODE=n     exit code (default 0)
//   ORV_DEMO_CRASH=1         be killed (SIGKILL) instead of ending normally
//   ORV_DEMO_PERSON=text     the person of the saved case file
//   ORV_DEMO_ARGS_LOG=file   append the arguments as one tab-separated line

#include "CaseFiles.h"
#include "Configuration.h"
#include "CrossPlatformApi.h"
#include "Exceptions.h"
#include "SharedHelpers.h"
#include "IniFile.h"
#include "NvWinIni.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QThread>
#include <QWidget>

#include <csignal>
#include <cstdio>
#include <optional>

namespace {

struct Request
{
    enum Kind { NewFile, OpenFile, Convert };
    QString modeParameter;
    Kind kind = NewFile;
    QString file;   // OpenFile: the file; Convert: last year's file, may be empty
};

Request parseRequest(const QStringList& arguments)
{
    Request request;
    request.modeParameter = arguments.value(1);
    const QString first = arguments.value(2);
    if (first == QLatin1String("-c")) {
        request.kind = Request::Convert;
        request.file = arguments.value(3);
    } else if (!first.isEmpty() && first != QLatin1String("-n")) {
        request.kind = Request::OpenFile;
        request.file = first;
    }
    return request;
}

QString describe(const Request& request)
{
    switch (request.kind) {
    case Request::OpenFile:
        return QStringLiteral("Steuerfall öffnen: ") + request.file;
    case Request::Convert:
        return request.file.isEmpty() ? QStringLiteral("Daten aus dem Vorjahr übernehmen")
                                      : QStringLiteral("Daten übernehmen aus: ") + request.file;
    case Request::NewFile:
        break;
    }
    return QStringLiteral("Neuen Steuerfall anlegen");
}

// "-mode=einur" names the mode "einur"; without it the mode is "normal".
QString modeName(const QString& modeParameter)
{
    static const QRegularExpression pattern(QStringLiteral("-mode=(\\w+)"));
    const QRegularExpressionMatch match = pattern.match(modeParameter);
    return match.hasMatch() ? match.captured(1) : QString::fromLatin1(cszDefaultModus);
}

QString setting(const char* section, const char* key)
{
    return QString::fromLatin1(cConfiguration::theInstance()->GetString(section, key, "").c_str());
}

// The program lies in <Resources>/ORV.app/Contents/MacOS/ of the launcher's
// bundle. Its settings are the launcher's: the launcher's own executable
// path makes every folder of the installation the same for both programs.
bool openInstallation(const QString& mode)
{
    QString resources = QString::fromLatin1(CrossPlatformApi::executablePath().c_str());
    for (int level = 0; level < 4; ++level)
        resources = QFileInfo(resources).path();
    const QString launcher = QDir::cleanPath(resources + QStringLiteral("/../MacOS/Start-Center"));
    CrossPlatformApi::overrideExecutablePath(launcher.toLatin1().toStdString());

    if (!openInstallationSettings())
        return false;
    try {
        cNvWinIni::theInstance()->setModus(mode.toLatin1().toStdString());
    } catch (const xNvException& error) {
        std::fprintf(stderr, "ORV: %s\n", error.what());
        return false;
    }
    return true;
}

// --- Case files ----------------------------------------------------------------

struct CaseData
{
    QString person;
    QString comment;
};

QString escapeXml(const QString& text)
{
    return text.toHtmlEscaped();
}

QString unescapeXml(QString text)
{
    text.replace(QLatin1String("&lt;"), QLatin1String("<"));
    text.replace(QLatin1String("&gt;"), QLatin1String(">"));
    text.replace(QLatin1String("&quot;"), QLatin1String("\""));
    text.replace(QLatin1String("&#39;"), QLatin1String("'"));
    text.replace(QLatin1String("&amp;"), QLatin1String("&"));
    return text;
}

QRegularExpression elementPattern(const QString& name)
{
    return QRegularExpression(QStringLiteral("<%1>(.*?)</%1>").arg(name),
                              QRegularExpression::DotMatchesEverythingOption);
}

QString readLatin1(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll()) : QString();
}

bool writeLatin1(const QString& path, const QString& text)
{
    QFile file(path);
    const QByteArray bytes = text.toLatin1();
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

CaseData readCaseData(const QString& path)
{
    const QString text = readLatin1(path);
    return {unescapeXml(elementPattern(QStringLiteral("Person")).match(text).captured(1)),
            unescapeXml(elementPattern(QStringLiteral("Kommentar")).match(text).captured(1))};
}

// The tax year is the number at the end of the mode's name, e.g. "Steuererklärung 2011".
QString taxYear()
{
    static const QRegularExpression year(QStringLiteral("(\\d{4})\\s*$"));
    return year.match(setting("ModusEinstellungen", "Bezeichnung")).captured(1);
}

// The extension of the mode's first file pattern ("*.est11" gives ".est11").
QString fileExtension()
{
    const QStringList patterns = CaseFiles::nameFilters();
    QString extension = patterns.value(0);
    extension.remove(QLatin1Char('*'));
    if (!extension.startsWith(QLatin1Char('.')) || extension.size() < 2 || extension.contains(QLatin1Char('?')))
        return QStringLiteral(".orv");
    return extension;
}

QString caseFileText(const QString& mode, const CaseData& data)
{
    return QStringLiteral("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n"
                          "<Steuerfall Programm=\"Orvane-Erklärung\" Version=\"17.0.65\" Modus=\"%1\" "
                          "Steuerjahr=\"%2\">\n"
                          "<Person>%3</Person>\n"
                          "<Kommentar>%4</Kommentar>\n"
                          "<Formulare>\n"
                          "</Formulare>\n"
                          "</Steuerfall>\n")
        .arg(mode, taxYear(), escapeXml(data.person), escapeXml(data.comment));
}

// A file name from the person's name: characters that a file name or the
// Latin-1 settings cannot hold become "_".
QString fileNameBase(const QString& person)
{
    QString base = person.trimmed();
    for (QChar& c : base) {
        if (c.unicode() > 0xFF || c.unicode() < 0x20 || QStringLiteral("/\\:*?\"<>|").contains(c))
            c = QLatin1Char('_');
    }
    if (base.isEmpty())
        base = QStringLiteral("Neuer Steuerfall");
    const QString year = taxYear();
    return year.isEmpty() ? base : base + QLatin1Char(' ') + year;
}

QString unusedPath(const QString& folder, const QString& base, const QString& extension)
{
    QString path = folder + base + extension;
    for (int number = 2; QFileInfo::exists(path); ++number)
        path = folder + base + QStringLiteral(" (%1)").arg(number) + extension;
    return path;
}

// The mode's list of recently used files in the user's mode settings: the
// new file first, the others moved down, none twice.
void recordLastFile(const QString& path)
{
    constexpr int entries = 4;
    cIniFile settings(cNvWinIni::theInstance()->getUserModusIniPath(), false, false);
    QStringList files{path};
    for (int i = 0; i < entries; ++i) {
        const QString key = QString::number(i);
        const QString file = QString::fromLatin1(settings.GetString("MRUFiles", key.toLatin1().constData(), "").c_str());
        if (!file.isEmpty() && !files.contains(file))
            files << file;
    }
    for (int i = 0; i < entries && i < files.size(); ++i)
        settings.WriteString("MRUFiles", QByteArray::number(i).constData(), files.at(i).toLatin1().constData());
}

// Saves the case: an opened file keeps everything but person and comment;
// otherwise a new file appears in the working folder. Returns the path, or
// nothing when the file cannot be written.
std::optional<QString> saveCase(const Request& request, const QString& mode, const CaseData& data)
{
    QString path;
    QString text;
    if (request.kind == Request::OpenFile && QFileInfo(request.file).isFile()) {
        path = request.file;
        text = readLatin1(path);
        text.replace(elementPattern(QStringLiteral("Person")),
                     QStringLiteral("<Person>%1</Person>").arg(escapeXml(data.person)));
        text.replace(elementPattern(QStringLiteral("Kommentar")),
                     QStringLiteral("<Kommentar>%1</Kommentar>").arg(escapeXml(data.comment)));
    } else {
        path = unusedPath(CaseFiles::workFolder(), fileNameBase(data.person), fileExtension());
        text = caseFileText(mode, data);
    }
    // The settings first: a launcher that notices the new file in its folder
    // then finds it recorded as well.
    recordLastFile(path);
    if (!writeLatin1(path, text))
        return std::nullopt;
    return path;
}

CaseData initialData(const Request& request)
{
    if (!request.file.isEmpty())
        return readCaseData(request.file);
    CaseData data;
    if (request.kind == Request::Convert)
        data.comment = QStringLiteral("Daten aus dem Vorjahr übernommen");
    return data;
}

void logArguments(const QStringList& arguments)
{
    const QString logPath = qEnvironmentVariable("ORV_DEMO_ARGS_LOG");
    if (logPath.isEmpty())
        return;
    QFile log(logPath);
    if (log.open(QIODevice::WriteOnly | QIODevice::Append))
        log.write(arguments.mid(1).join(QLatin1Char('\t')).toUtf8() + '\n');
}

// --- Without a window ----------------------------------------------------------

int runHeadless(const Request& request, const QString& mode)
{
    QThread::msleep(qEnvironmentVariableIntValue("ORV_DEMO_DELAY_MS"));
    CaseData data = initialData(request);
    if (qEnvironmentVariableIsSet("ORV_DEMO_PERSON"))
        data.person = qEnvironmentVariable("ORV_DEMO_PERSON");
    const std::optional<QString> saved = saveCase(request, mode, data);
    if (!saved)
        std::fprintf(stderr, "ORV: cannot save the case file\n");
    if (qEnvironmentVariableIntValue("ORV_DEMO_CRASH") == 1)
        std::raise(SIGKILL);
    return qEnvironmentVariableIntValue("ORV_DEMO_EXIT_CODE");
}

// --- The window ----------------------------------------------------------------

class DemoWindow : public QWidget
{
public:
    DemoWindow(const Request& request, const QString& mode)
        : m_request(request)
        , m_mode(mode)
    {
        setWindowTitle(QStringLiteral("Orvane-Erklärung 2012 (Demo)"));
        auto* form = new QFormLayout;
        form->addRow(QStringLiteral("Modus-Parameter:"),
                     new QLabel(request.modeParameter.isEmpty() ? QStringLiteral("(keiner)") : request.modeParameter));
        auto* task = new QLabel(describe(request));
        task->setWordWrap(true);
        form->addRow(QStringLiteral("Auftrag:"), task);

        const CaseData data = initialData(request);
        m_person = new QLineEdit(data.person);
        m_comment = new QPlainTextEdit(data.comment);
        form->addRow(QStringLiteral("Person:"), m_person);
        form->addRow(QStringLiteral("Kommentar:"), m_comment);
        m_status = new QLabel;
        m_status->setWordWrap(true);
        form->addRow(m_status);

        auto* save = new QPushButton(QStringLiteral("Speichern"));
        auto* close = new QPushButton(QStringLiteral("Schließen"));
        connect(save, &QPushButton::clicked, this, &DemoWindow::save);
        connect(close, &QPushButton::clicked, this, &QWidget::close);
        auto* buttons = new QHBoxLayout;
        buttons->addStretch();
        buttons->addWidget(save);
        buttons->addWidget(close);

        auto* layout = new QVBoxLayout(this);
        layout->addLayout(form);
        layout->addLayout(buttons);
        resize(520, 320);
    }

private:
    void save()
    {
        const std::optional<QString> path =
            saveCase(m_request, m_mode, {m_person->text(), m_comment->toPlainText()});
        m_status->setText(path ? QStringLiteral("Gespeichert: ") + *path
                               : QStringLiteral("Der Steuerfall konnte nicht gespeichert werden."));
        // Saving a new case once makes it the file that is worked on.
        if (path) {
            m_request.kind = Request::OpenFile;
            m_request.file = *path;
        }
    }

    Request m_request;
    QString m_mode;
    QLineEdit* m_person;
    QPlainTextEdit* m_comment;
    QLabel* m_status;
};

} // namespace

int main(int argc, char** argv)
{
    const bool headless = qEnvironmentVariableIntValue("ORV_DEMO_HEADLESS") == 1;
    std::optional<QCoreApplication> core;
    std::optional<QApplication> gui;
    if (headless)
        core.emplace(argc, argv);
    else
        gui.emplace(argc, argv);

    const QStringList arguments = QCoreApplication::arguments();
    logArguments(arguments);
    const Request request = parseRequest(arguments);
    const QString mode = modeName(request.modeParameter);
    if (!openInstallation(mode)) {
        std::fprintf(stderr, "ORV: the installation's settings cannot be read\n");
        return 1;
    }

    if (headless)
        return runHeadless(request, mode);
    DemoWindow window(request, mode);
    window.show();
    return QApplication::exec();
}
