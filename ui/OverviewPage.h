#pragma once

#include <QFile>
#include <QString>
#include <QStringList>
#include <QTextStream>

// The printable overview of the case files of a mode: an HTML document with
// one table row per file (name and creation time, the persons of the case,
// the user's comment), written into the user's cache folder and opened in
// the web browser.
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
    // are reported in message boxes.
    void show();

    void writeHTML();
    void writeFileInfo();

    // German special characters as entities, line feeds as "<BR>", carriage
    // returns dropped; markup passes unchanged.
    static QString convertToHTML(const QString& text);

private:
    QStringList m_fileNames;
    QString m_folder;
    QString m_caption;
    bool m_writeNeeded = true;
    QFile m_file;
    QTextStream m_stream;
};
