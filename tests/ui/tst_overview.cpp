#include "CrossPlatformApi.h"
#include "OverviewPage.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QTest>
#include <QUrl>

class OverviewPageTest : public QObject
{
    Q_OBJECT

private:
    bool writeCaseFile(const QString& name, const QByteArray& content)
    {
        QFile file(m_folder + name);
        return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
    }

    QByteArray document() const
    {
        QFile file(m_folder + m_caption + QStringLiteral(".html"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    // The boxes shown as "title|text" and the addresses opened.
    TempInstallation m_installation;
    QString m_folder;
    const QString m_caption = QStringLiteral("Steuererkl\u00E4rungen 2011");
    QStringList m_boxes;
    QList<QUrl> m_opened;
    bool m_browserInstalled = true;

private slots:
    void initTestCase()
    {
        CrossPlatformApi::setMessageBoxHandler([this](const MessageBoxRequest& request) {
            m_boxes.append(request.title + QLatin1Char('|') + request.text);
            return MessageBoxAnswer{QMessageBox::Ok, false};
        });
        CrossPlatformApi::setUrlOpener([this](const QUrl& url) {
            m_opened.append(url);
            return m_browserInstalled;
        });
    }

    void cleanupTestCase()
    {
        CrossPlatformApi::setMessageBoxHandler({});
        CrossPlatformApi::setUrlOpener({});
    }

    void init()
    {
        m_folder = m_installation.root() + QStringLiteral("/F\u00E4lle & <Co>/");
        QDir(m_folder).removeRecursively();
        QVERIFY(QDir().mkpath(m_folder));
        m_boxes.clear();
        m_opened.clear();
        m_browserInstalled = true;
    }

    void writesOneRowPerCaseFile()
    {
        const QString hostile = QStringLiteral("<img src=x onerror=alert(1)>.est11");
        QVERIFY(writeCaseFile(QStringLiteral("M\u00FCller 2011.est11"),
                              "<Steuerfall><Person>Hans M\xFCller\r\nErika M\xFCller</Person>"
                              "<Kommentar>Zeile 1\r\nZeile <B>2</b> &amp; <i>3</i><br><P>Ende</p>"
                              "</Kommentar></Steuerfall>"));
        QVERIFY(writeCaseFile(QStringLiteral("Leer.est11"),
                              "<Person>?</Person><Kommentar></Kommentar>"));
        QVERIFY(writeCaseFile(QStringLiteral("Kaputt.est11"), QByteArray("\x00\x01\xFF\x80", 4)));
        QVERIFY(writeCaseFile(hostile, "<Person><script>alert(1)</script></Person>"
                                       "<Kommentar><b onclick=x>a</b><p style=y>b</p><br/> 1 < 2 > 0"
                                       "</Kommentar>"));

        OverviewPage page;
        page.setTaxFiles(m_folder, {QStringLiteral("M\u00FCller 2011.est11"), QStringLiteral("Fehlt.est11"),
                                    QStringLiteral("Leer.est11"), QStringLiteral("Kaputt.est11"), hostile});
        page.setCaption(m_caption);
        page.show();
        QCOMPARE(m_boxes, QStringList());
        QCOMPARE(QGuiApplication::overrideCursor(), nullptr);
        const QString path = m_folder + m_caption + QStringLiteral(".html");
        QCOMPARE(m_opened, QList<QUrl>{QUrl::fromLocalFile(path)});
        QVERIFY(m_opened.first().toString().startsWith(QLatin1String("file:///")));

        // One line of ISO-8859-1.
        const QByteArray html = document();
        QVERIFY(!html.contains('\n'));
        QVERIFY(!html.contains('\r'));
        QVERIFY(html.startsWith("<!DOCTYPE HTML PUBLIC -//W3C//DTD HTML 4.01 Transitional//EN "
                                "http://www.w3.org/TR/html4/loose.dtd><HTML><HEAD>  <TITLE>Datei-&Uuml;bersicht"
                                "</TITLE>  <META HTTP-EQUIV=Content-Type CONTENT=text/html; charset=ISO-8859-1>"));
        QVERIFY(html.contains("  <META NAME=author CONTENT=Marvendo>"));
        QVERIFY(html.endsWith("</FONT></P></BODY></HTML>"));
        QVERIFY(html.contains("<H3>&Uuml;bersicht der Steuererkl&auml;rungen 2011</H3><HR>"
                              "<P><B>Verzeichnis:</B> " + QFile::encodeName(m_installation.root())
                              + "/F&auml;lle &amp; &lt;Co&gt;/</P><TABLE "));
        QVERIFY(html.contains("Datei: " + QFile::encodeName(m_installation.root())
                              + "/F&auml;lle &amp; &lt;Co&gt;/Steuererkl&auml;rungen 2011.html<BR>Erstellt am "));

        // Rows in list order; a missing file has none, an unreadable one only its name.
        const int muller = html.indexOf("<TR VALIGN=top><TD>M\xFCller 2011.est11<BR><FONT SIZE=1>(");
        const int leer = html.indexOf("<TR VALIGN=top><TD>Leer.est11<BR>");
        const int kaputt = html.indexOf("<TR VALIGN=top><TD>Kaputt.est11<BR>");
        const int img = html.indexOf("<TR VALIGN=top><TD>&lt;img src=x onerror=alert(1)&gt;.est11<BR>");
        QVERIFY(muller > 0 && muller < leer && leer < kaputt && kaputt < img);
        QVERIFY(!html.contains("Fehlt"));
        QCOMPARE(html.count("<TR VALIGN=top>"), 4);
        const QRegularExpression nameCellOnly(QStringLiteral(
            "^<TR VALIGN=top><TD>Kaputt.est11<BR><FONT SIZE=1>\\(\\d\\d\\.\\d\\d\\.\\d{4} \\d\\d:\\d\\d\\)"
            "</FONT></TD><TR VALIGN=top>"));
        QVERIFY(nameCellOnly.match(QString::fromLatin1(html.mid(kaputt))).hasMatch());

        QVERIFY(html.contains("<TD>Hans M&uuml;ller<BR>Erika M&uuml;ller</TD>"
                              "<TD>Zeile 1<BR>Zeile <B>2</b> &amp;amp; <i>3</i><br><P>Ende</p></TD></TR>"));
        QVERIFY(html.contains("<TD>Keine Angaben zur Person vorhanden.</TD>"
                              "<TD>Keine weiteren Angaben vorhanden.</TD></TR>"));

        // Nothing from a file runs as markup.
        QVERIFY(!html.contains("<img"));
        QVERIFY(!html.contains("<script"));
        QVERIFY(html.contains("<TD>&lt;script&gt;alert(1)&lt;/script&gt;</TD>"
                              "<TD>&lt;b onclick=x&gt;a</b>&lt;p style=y&gt;b</p>&lt;br/&gt; 1 &lt; 2 &gt; 0</TD>"));
    }

    void writesOnlyWhenTheFilesChanged()
    {
        QVERIFY(writeCaseFile(QStringLiteral("a.est11"), "<Person>Anna</Person>"));
        OverviewPage page;
        page.setCaption(m_caption);
        page.setTaxFiles(m_folder, {QStringLiteral("a.est11")});
        page.show();
        QVERIFY(document().contains("<TD>Anna</TD>"));

        QVERIFY(writeCaseFile(QStringLiteral("a.est11"), "<Person>Berta</Person>"));
        page.show();
        QVERIFY(document().contains("<TD>Anna</TD>"));
        page.setTaxFiles(m_folder, {QStringLiteral("a.est11")});
        page.show();
        QVERIFY(document().contains("<TD>Berta</TD>"));
        QCOMPARE(m_opened.size(), 3);
        QCOMPARE(m_boxes, QStringList());
    }

    void reportsWhatStopsTheOverview()
    {
        OverviewPage page;
        page.setCaption(m_caption);
        page.setTaxFiles(m_folder, {});
        page.show();
        QCOMPARE(m_boxes, QStringList{QStringLiteral(
                              "Datei-\u00DCbersicht|Im aktuellen Verzeichnis befinden sich keine Dateien dieses Modus.")});
        QVERIFY(m_opened.isEmpty());
        QVERIFY(document().isEmpty());
        QCOMPARE(QGuiApplication::overrideCursor(), nullptr);

        m_boxes.clear();
        QVERIFY(writeCaseFile(QStringLiteral("a.est11"), "<Person>Anna</Person>"));
        page.setTaxFiles(m_folder + QStringLiteral("fehlt/"), {QStringLiteral("a.est11")});
        page.show();
        QCOMPARE(m_boxes, QStringList{QStringLiteral(
                              "Datei-\u00DCbersicht|Die HTML-Datei zur Steuerfall-\u00DCbersicht konnte nicht "
                              "erstellt werden!")});
        QVERIFY(m_opened.isEmpty());
        QCOMPARE(QGuiApplication::overrideCursor(), nullptr);

        m_boxes.clear();
        m_browserInstalled = false;
        page.setTaxFiles(m_folder, {QStringLiteral("a.est11")});
        page.show();
        QCOMPARE(m_opened.size(), 1);
        QCOMPARE(m_boxes, QStringList{QStringLiteral(
                              "Datei\u00FCbersicht anzeigen|Sie haben keinen Internet-Browser installiert!\n"
                              "Die Datei\u00FCbersicht kann nicht angezeigt werden.\n"
                              "Sie finden die \u00DCbersichts-Datei unter\n")
                          + m_folder + m_caption + QStringLiteral(".html")});
        QVERIFY(!document().isEmpty());
    }

    void convertsGermanCharacters()
    {
        QCOMPARE(OverviewPage::convertToHTML(QStringLiteral("\u00C4\u00D6\u00DC\u00E4\u00F6\u00FC\u00DF\r\n<b>&x;</b>\u00E9")),
                 QStringLiteral("&Auml;&Ouml;&Uuml;&auml;&ouml;&uuml;&szlig;<BR><b>&x;</b>\u00E9"));
    }
};

SC_TEST(OverviewPageTest)
#include "tst_overview.moc"
