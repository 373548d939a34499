// Case files that reach the launcher from outside: its command line, the
// command line of a later start, and files dropped on the window.

#include "StartCenter.h"

#include "CaseFileModes.h"
#include "CommandLine.h"
#include "CrossPlatformApi.h"
#include "RecentFiles.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QMimeData>
#include <QUrl>

Q_LOGGING_CATEGORY(lcOpen, "startcenter.open", QtWarningMsg)

namespace {

// More files at once are taken for a mistake (a wildcard that caught a whole
// folder) rather than a wish: only the first one is opened.
constexpr qsizetype maxFilesAtOnce = 10;

QString shown(const QString& path)
{
    return QDir::toNativeSeparators(path);
}

// Why the file cannot be opened; empty when it can, in mode.
QString refusal(const QString& path, int mode)
{
    const QFileInfo info(path);
    if (info.isDir())
        return QStringLiteral("»%1« ist ein Verzeichnis und kein Steuerfall.").arg(shown(path));
    if (!info.isFile() || !info.isReadable())
        return QStringLiteral("Die Datei »%1« wurde nicht gefunden oder kann nicht gelesen werden.").arg(shown(path));
    if (mode < 0)
        return QStringLiteral("Die Datei »%1« ist kein Steuerfall, den das Start-Center öffnen kann.").arg(shown(path));
    return QString();
}

// The dragged files when every one of them is a case file that a mode opens;
// otherwise none.
QStringList droppableCaseFiles(const QMimeData* data)
{
    if (!data || !data->hasUrls())
        return {};
    const CaseFileModes modes;
    QStringList files;
    for (const QUrl& url : data->urls()) {
        const QString path = url.isLocalFile() ? url.toLocalFile() : QString();
        if (path.isEmpty() || !refusal(path, modes.modeOf(path)).isEmpty())
            return {};
        files << path;
    }
    return files;
}

} // namespace

QStringList StartCenter::modeNames()
{
    QStringList names;
    for (int mode = 0; mode < Ui_MainWindow::ModeCount; ++mode)
        names << QLatin1String(Ui_MainWindow::modeName(mode));
    return names;
}

void StartCenter::followCommandLine(const CommandLine& commandLine)
{
    if (commandLine.request() != CommandLine::Start)
        return;
    const int mode = int(modeNames().indexOf(commandLine.newMode()));
    if (mode >= 0) {
        chooseMode(mode);
        if (m_mode == mode)
            startORV();
    }
    if (!commandLine.files().isEmpty() || commandLine.isIncomplete())
        openCaseFiles(commandLine.files(), commandLine.isIncomplete());
}

void StartCenter::openCaseFiles(const QStringList& files, bool incomplete)
{
    const CaseFileModes modes;
    const qsizetype considered = files.size() > maxFilesAtOnce ? 1 : files.size();
    QStringList problems;
    QList<std::pair<QString, int>> opening;
    for (qsizetype i = 0; i < considered; ++i) {
        const int mode = modes.modeOf(files.at(i));
        const QString problem = refusal(files.at(i), mode);
        if (problem.isEmpty())
            opening.append({files.at(i), mode});
        else
            problems << problem;
    }
    if (considered < files.size())
        problems << QStringLiteral("Es wurden %1 Dateien auf einmal übergeben; geöffnet wird höchstens die erste. "
                                   "%2 Dateien wurden nicht geöffnet.")
                        .arg(files.size())
                        .arg(files.size() - considered);
    if (incomplete)
        problems << QStringLiteral("Weitere Dateien sind beim Start-Center nicht angekommen und wurden nicht geöffnet.");

    if (!problems.isEmpty()) {
        MessageBoxRequest box;
        box.icon = QMessageBox::Warning;
        box.title = QStringLiteral("Steuerfall öffnen");
        box.text = problems.join(QStringLiteral("\n\n"));
        box.parent = this;
        CrossPlatformApi::showMessageBox(box);
    }
    for (const auto& [file, mode] : opening) {
        if (mode != m_mode)
            chooseMode(mode);
        if (mode == m_mode)
            startORV(file);
    }
}

void StartCenter::addToRecentFiles(const QString& file)
{
    const QString path = QFileInfo(file).absoluteFilePath();
    m_recentFilesWriter.start([path] {
        const RecentFiles::Result result =
            RecentFiles::add(path, QStringLiteral("Start-Center"), QStringLiteral("startcenter %f"));
        if (result != RecentFiles::Result::Added)
            qCWarning(lcOpen) << "recently used list" << RecentFiles::listPath() << "not updated:" << int(result);
    });
}

void StartCenter::dragEnterEvent(QDragEnterEvent* event)
{
    m_dragAccepted = !droppableCaseFiles(event->mimeData()).isEmpty();
    if (m_dragAccepted)
        event->acceptProposedAction();
    else
        event->ignore();
}

void StartCenter::dragMoveEvent(QDragMoveEvent* event)
{
    if (m_dragAccepted)
        event->acceptProposedAction();
    else
        event->ignore();
}

void StartCenter::dropEvent(QDropEvent* event)
{
    m_dragAccepted = false;
    const QStringList files = droppableCaseFiles(event->mimeData());
    if (files.isEmpty()) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    // Opened once the drop is over: a box must not run inside the drag.
    QMetaObject::invokeMethod(this, [this, files] { openCaseFiles(files); }, Qt::QueuedConnection);
}
