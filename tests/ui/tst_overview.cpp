#include "CrossPlatformApi.h"
#include "OverviewPage.h"
#include "UiSettings.h"
#include "TestMain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QApplication>
#include <QProgressDialog>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>
#include <QUrl>

#include <memory>


class OverviewPageTest : public QObject
{
    Q_OBJECT

private:
    bool writeCaseFile(const QString& name, const QByteArray& content)
    {
        return m_installation.writeFile(m_folder.mid(m_installation.root().size() + 1) + name, content);
    }

    // The document lies in the user's cache folder, not among the case files.
    QString cacheFolder() const { return qEnvironmentVariable("XDG_CACHE_HOME") + QStringLiteral("/Start-Center/"); }
    QString documentPath() const { return cacheFolder() + QStringLiteral("Steuererklärungen 2011.html"); }

    QByteArray document() const
    {
        QFile file(documentPath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    TempInstallation m_installation;
    QString m_folder;
    std::unique_ptr<MessageBoxRecorder> m_boxes;
    QList<QUrl> m_opened;

private slots:
    void init()
    {
        resetSettingsSingletons();
        m_folder = m_installation.root() + QStringLiteral("/Fälle & <Co>/");
        QDir(m_folder).removeRecursively();
        QVERIFY(QDir().mkpath(m_folder));
        m_boxes = std::make_unique<MessageBoxRecorder>();
        m_opened.clear();
        CrossPlatformApi::setUrlOpener([this](const QUrl& url) {
            m_opened.append(url);
            return true;
        });
    }

    void cleanup()
    {
        CrossPlatformApi::setUrlOpener({});
        m_boxes.reset();
    }

    void writesOneRowPerCaseFile()
    {
        const QString hostile = QStringLiteral("<img src=x onerror=alert(1)>.est11");
        QVERIFY(writeCaseFile(QStringLiteral("Müller 2011.est11"),
                              "<Person>Hans M\xFCller\r\nErika</Person><Kommentar>Zeile <B>1</b> &amp; "
                              "<i>2</i><br><P>3</p></Kommentar>"));
        QVERIFY(writeCaseFile(QStringLiteral("Leer.est11"), "<Person>?</Person><Kommentar></Kommentar>"));
        QVERIFY(writeCaseFile(QStringLiteral("Kaputt.est11"), QByteArray("\x00\x01\xFF", 3)));
        QVERIFY(writeCaseFile(hostile, "<Person><script>alert(1)</script></Person>"
                                       "<Kommentar><b onclick=x>a</b><br/> 1 < 2</Kommentar>"));
        const QString foreign = QStringLiteral("\u0141ukasz Dvo\u0159\u00E1k \u20AC-Test \U0001F600.est11");
        QVERIFY(writeCaseFile(foreign, "<Person>?</Person>"));

        OverviewPage page;
        page.setTaxFiles(m_folder, {QStringLiteral("Müller 2011.est11"), QStringLiteral("Fehlt.est11"),
                                    QStringLiteral("Leer.est11"), QStringLiteral("Kaputt.est11"), hostile, foreign});
        page.setCaption(QStringLiteral("Steuererklärungen 2011"));
        page.show();
        QCOMPARE(m_boxes->boxes, QStringList());
        QCOMPARE(QGuiApplication::overrideCursor(), nullptr);
        QCOMPARE(m_opened, QList<QUrl>{QUrl::fromLocalFile(documentPath())});

        // One line of ISO-8859-1, the folder and names with their markup characters as entities.
        const QByteArray html = document();
        const QByteArray folder = QFile::encodeName(m_installation.root()) + "/F&auml;lle &amp; &lt;Co&gt;/";
        QVERIFY(!html.contains('\n') && !html.contains('\r'));
        QVERIFY(html.contains("<H3>&Uuml;bersicht der Steuererkl&auml;rungen 2011</H3><HR><P><B>Verzeichnis:</B> "
                              + folder + "</P><TABLE "));
        QVERIFY(html.contains("Datei: " + QFile::encodeName(cacheFolder())
                              + "Steuererkl&auml;rungen 2011.html<BR>Erstellt am "));
        // Characters beyond Latin-1 as numeric references, Latin-1 ones as bytes.
        QVERIFY(html.contains("<TD>&#321;ukasz Dvo&#345;\xE1k &#8364;-Test &#128512;.est11<BR>"));
        QCOMPARE(QDir(m_folder).entryList(QDir::Files).size(), 5);   // the case folder gets nothing
        QCOMPARE(QFileInfo(documentPath()).permissions(),
                 QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);

        // Rows in list order: none for a missing file, only the name for an unreadable one.
        QCOMPARE(html.count("<TR VALIGN=top>"), 5);
        const QString created = QStringLiteral("<BR><FONT SIZE=1>\\(\\d\\d\\.\\d\\d\\.\\d{4} \\d\\d:\\d\\d\\)</FONT></TD>");
        const QRegularExpression rows(
            "<TR VALIGN=top><TD>Müller 2011.est11" + created
            + "<TD>Hans M&uuml;ller<BR>Erika</TD><TD>Zeile <B>1</b> &amp;amp; <i>2</i><br><P>3</p></TD></TR>"
              "<TR VALIGN=top><TD>Leer.est11" + created
            + "<TD>Keine Angaben zur Person vorhanden.</TD><TD>Keine weiteren Angaben vorhanden.</TD></TR>"
              "<TR VALIGN=top><TD>Kaputt.est11" + created
            + "<TR VALIGN=top><TD>&lt;img src=x onerror=alert\\(1\\)&gt;.est11" + created
            + "<TD>&lt;script&gt;alert\\(1\\)&lt;/script&gt;</TD><TD>&lt;b onclick=x&gt;a</b>&lt;br/&gt; 1 &lt; 2</TD>"
              "</TR><TR VALIGN=top>");
        QVERIFY(rows.match(QString::fromLatin1(html)).hasMatch());

        // Written again only for new files.
        QVERIFY(writeCaseFile(QStringLiteral("Leer.est11"), "<Person>Berta</Person>"));
        page.show();
        QVERIFY(!document().contains("Berta"));
        page.setTaxFiles(m_folder, {QStringLiteral("Leer.est11")});
        page.show();
        QVERIFY(document().contains("<TD>Berta</TD>"));
    }

    // The user cancels while the files are read: the document of before
    // stays, nothing unfinished is left and nothing is opened. The click
    // comes at the first turn of the event loop that waits for the worker,
    // long before it has read its thousands of files.
    void cancellingLeavesTheFormerDocument()
    {
        QStringList names;
        for (int i = 0; i < 3000; ++i) {
            names << QStringLiteral("%1.est11").arg(i);
            QVERIFY(writeCaseFile(names.last(), "<Person>P</Person>"));
        }
        QVERIFY(QDir().mkpath(cacheFolder()));
        QFile former(documentPath());
        QVERIFY(former.open(QIODevice::WriteOnly) && former.write("alt") == 3);
        former.close();

        bool cancelled = false;
        QTimer::singleShot(0, this, [&] {
            for (QWidget* widget : QApplication::topLevelWidgets()) {
                if (auto* progress = qobject_cast<QProgressDialog*>(widget)) {
                    progress->findChild<QPushButton*>()->click();
                    cancelled = true;
                }
            }
        });

        OverviewPage page;
        page.setTaxFiles(m_folder, names);
        page.setCaption(QStringLiteral("Steuererklärungen 2011"));
        page.show();
        QVERIFY(cancelled);
        QCOMPARE(document(), QByteArray("alt"));
        QCOMPARE(QDir(cacheFolder()).entryList(QDir::Files | QDir::Hidden | QDir::System),
                 QStringList{QStringLiteral("Steuererklärungen 2011.html")});
        QCOMPARE(m_opened, QList<QUrl>());
        QCOMPARE(m_boxes->boxes, QStringList());
        QCOMPARE(QGuiApplication::overrideCursor(), nullptr);
    }

    void reportsWhatStopsTheOverview()
    {
        OverviewPage page;
        page.setCaption(QStringLiteral("Steuererklärungen 2011"));
        page.setTaxFiles(m_folder, {});
        page.show();
        QVERIFY(writeCaseFile(QStringLiteral("a.est11"), "<Person>Anna</Person>"));
        // A file where the cache folder belongs.
        QVERIFY(QDir(cacheFolder()).removeRecursively());
        QVERIFY(m_installation.writeFile(QStringLiteral("home/.cache/Start-Center"), "x"));
        page.setTaxFiles(m_folder, {QStringLiteral("a.est11")});
        page.show();
        QVERIFY(QFile::remove(m_installation.home() + QStringLiteral("/.cache/Start-Center")));
        QVERIFY(m_opened.isEmpty());
        // No program can show the document, as the desktop's opener reports.
        CrossPlatformApi::setUrlOpener({});
        QVERIFY(m_installation.addStandInProgram(QStringLiteral("xdg-open"), "exit 3"));
        page.setTaxFiles(m_folder, {QStringLiteral("a.est11")});
        page.show();

        QCOMPARE(m_boxes->boxes, (QStringList{
            QStringLiteral("Datei-Übersicht|Im aktuellen Verzeichnis befinden sich keine Dateien dieses Modus."),
            QStringLiteral("Datei-Übersicht|Die HTML-Datei zur Steuerfall-Übersicht konnte nicht erstellt werden!"),
            QStringLiteral("Dateiübersicht anzeigen|Sie haben keinen Internet-Browser installiert!\n"
                           "Die Dateiübersicht kann nicht angezeigt werden.\nSie finden die Übersichts-Datei unter\n")
                + documentPath()}));
        QCOMPARE(QGuiApplication::overrideCursor(), nullptr);
    }
};

SC_TEST(OverviewPageTest)
#include "tst_overview.moc"
