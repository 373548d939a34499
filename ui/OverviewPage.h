#pragma once

#include <QSaveFile>
#include <QString>
#include <QStringList>
#include <QTextStream>

#include <atomic>

// The printable overview of the case files of a mode: an HTML document with
// one table row per file (name and creation time, the persons of the case,
// the user's comment), written into the user's cache folder and opened in
// the web browser. The document is written on a worker thread; the window keeps
// answering, and after a moment a progress dialog lets the user cancel. The
// document replaces the old one only when it is complete.
//
// Nothing taken from the files may run in the browser: names and the folder
// are written with every "<", ">" and "&" as an entity, and the values read
// from the case files keep only simple text markup (b, i, u, br, p).
class OverviewPage
{
public:
    OverviewPage();
    ~OverviewPage();
    OverviewPage(const OverviewPage&) = delete;
    OverviewPage& operator=(const OverviewPage&) = delete;

    // folder ends with its separator; fileNames carry their extensions.
    void setTaxFiles(const QString& folder, const QStringList& fileNames);
    // The mode's page heading; it also names the document,
    // <cache folder><caption>.html.
    void setCaption(const QString& caption);

    // Writes the document unless it is up to date, and opens it. Failures
    // are reported in message boxes; a cancelled document is not opened.
    void show();

    // The document, to the stream; stops after the current row once
    // cancelling is requested.
    void writeHTML();
    void writeFileInfo();

    // German special characters as entities, line feeds as "<BR>", carriage
    // returns dropped; markup passes unchanged.
    static QString convertToHTML(const QString& text);

private:
    // Runs writeHTML() off the UI thread; false when the user cancelled.
    bool writeInBackground();

    QStringList m_fileNames;
    QString m_folder;
    QString m_caption;
    bool m_writeNeeded = true;
    QSaveFile m_file;
    QTextStream m_stream;
    std::atomic<int> m_rowsWritten{0};
    std::atomic<bool> m_cancelRequested{false};
};
