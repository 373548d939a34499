#include "QuickView.h"
#include "QuickViewWidget.h"
#include "TestMain.h"
#include "UiSettings.h"

#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QStackedLayout>
#include <QTest>
#include <QTextEdit>

#include <memory>

namespace {

const QString readError = QStringLiteral(
    "Dateiinfo|Die Dateiinformationen können aufgrund eines Fehlers leider nicht angezeigt werden!");
const QString viewerError = QStringLiteral(
    "Dateiinformationen|Fehler beim Anzeigen der Detail-Informationen!\nDie QuickView-Anwendung ");
const QString viewerMissing = viewerError + QStringLiteral("kann nicht gestartet werden.");
const QString viewerFailed = viewerError + QStringLiteral("konnte nicht gestartet werden.");

// Page name, file label and the two fields, as the user sees them.
QStringList shown(const QuickViewWidget& widget)
{
    return {widget.findChild<QStackedLayout*>()->currentWidget()->objectName(),
            widget.findChild<QLabel*>(QStringLiteral("FileLabel"))->text(),
            widget.findChild<QTextEdit*>(QStringLiteral("PersonsField"))->toPlainText(),
            widget.findChild<QTextEdit*>(QStringLiteral("CommentField"))->toPlainText()};
}

} // namespace

// The quick view panel on real case files, and starting the detail viewer.
class TestQuickView : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TempInstallation> m_install;
    std::unique_ptr<MessageBoxRecorder> m_boxes;

    QString writeCaseFile(const QString& name, const QByteArray& content) const
    {
        const QString relative = QStringLiteral("home/Steuerfälle/") + name;
        return m_install->writeFile(relative, content) ? m_install->root() + QLatin1Char('/') + relative : QString();
    }

private slots:
    void init()
    {
        m_install = std::make_unique<TempInstallation>();
        m_boxes = std::make_unique<MessageBoxRecorder>();
        QuickView::resetInstance();
        QVERIFY(openUiSettings(*m_install));
        DMFileName::getGlobalFileEnvironment().setSymbol("HomeDataDir", m_install->home().toLatin1().data());
    }

    void cleanup()
    {
        CrossPlatformApi::setDetachedStarter({});
        QuickView::resetInstance();
        resetSettingsSingletons();
        m_boxes.reset();
        m_install.reset();
    }

    void showsPersonsAndCommentOrTheSampleCases()
    {
        const QString path = writeCaseFile(QStringLiteral("Lea Schäfer 2011.est11"),
                                           "<Steuerfall>\n<Person>Lea Sch\xE4" "fer</Person>\n"
                                           "<Kommentar>Belege f\xFCr 2011\nnachreichen</Kommentar>\n");
        QuickViewWidget widget;

        // Given with a folder symbol, as the file lists keep their paths.
        widget.setFile(QStringLiteral("<HomeDataDir>/Steuerfälle/Lea Schäfer 2011.est11"));
        QVERIFY2(m_boxes->boxes.isEmpty(), qPrintable(m_boxes->boxes.join(QLatin1Char('\n'))));
        QCOMPARE(shown(widget), (QStringList{QStringLiteral("InformationPage"),
                                             QStringLiteral("»Lea Schäfer 2011.est11«"),
                                             QStringLiteral("Lea Schäfer"),
                                             QStringLiteral("Belege für 2011\nnachreichen")}));
        // The tip holds the whole path, wrapped.
        QString toolTip = widget.findChild<QLabel*>(QStringLiteral("FileLabel"))->toolTip();
        QCOMPARE(toolTip.remove(QStringLiteral("<br>")).remove(QLatin1Char(' ')),
                 QString(path).remove(QLatin1Char(' ')));

        // An empty value and a missing one both get their fallback texts.
        widget.setFile(writeCaseFile(QStringLiteral("Leer.est11"), "<Person></Person>"));
        QCOMPARE(QuickView::TheInstance()->getItem("Kommentar"), "?");
        QCOMPARE(shown(widget), (QStringList{QStringLiteral("InformationPage"), QStringLiteral("»Leer.est11«"),
                                             QStringLiteral("Keine Angaben zur Person vorhanden."),
                                             QStringLiteral("Keine weiteren Angaben vorhanden.")}));

        // No file: the hint with the sample-case folder, and no box.
        widget.setFile(QString());
        QVERIFY(m_boxes->boxes.isEmpty());
        QCOMPARE(shown(widget).first(), QStringLiteral("NoFilePage"));
        const QString hint = widget.findChild<QLabel*>(QStringLiteral("SampleCasesHint"))->text();
        QVERIFY(hint.startsWith(QStringLiteral("<center><br><b>Keine Datei ausgewählt.")));
        const QString sampleFolder = m_install->resourcesDir() + QStringLiteral("Musterfälle");
        QVERIFY2(hint.endsWith(QStringLiteral("»") + sampleFolder + QStringLiteral("«")), qPrintable(hint));
    }

    void unreadableFileIsReportedAndNothingStale()
    {
        const QString good = writeCaseFile(QStringLiteral("a.est11"), "<Person>Hans</Person>");
        const QString withoutValues = writeCaseFile(QStringLiteral("b.est11"), "<Steuerfall/>");
        QuickViewWidget widget;

        for (const QString& unreadable : {m_install->root() + QStringLiteral("/fehlt.est11"), withoutValues,
                                          QStringLiteral("<Unbekannt>/a.est11")}) {
            widget.setFile(good);
            QCOMPARE(shown(widget).at(2), QStringLiteral("Hans"));
            widget.setFile(unreadable);
            QCOMPARE(m_boxes->boxes, QStringList{readError});
            m_boxes->boxes.clear();
            QCOMPARE(shown(widget), (QStringList{QStringLiteral("InformationPage"), QStringLiteral("<Filename>"),
                                                 QStringLiteral("<Personendaten>"),
                                                 QStringLiteral("<Kommentar>")}));
            QCOMPARE(QuickView::TheInstance()->getItem("Person"), "");
        }
    }

    void moreStartsTheViewerWithTheQuotedPath()
    {
        QStringList started;
        bool starts = true;
        CrossPlatformApi::setDetachedStarter([&](const QString& program, const QStringList& arguments) {
            started << program + QLatin1Char('|') + arguments.join(QLatin1Char('|'));
            return starts;
        });
        const QString path = writeCaseFile(QStringLiteral("Familie 2011.est11"), "<Person>X</Person>");
        QuickViewWidget widget;
        widget.setFile(path);
        QPushButton* more = widget.findChild<QPushButton*>(QStringLiteral("MoreButton"));

        more->click();
        QCOMPARE(m_boxes->boxes, QStringList{viewerMissing});

        const QString viewer = m_install->resourcesDir() + QStringLiteral("Dmqv32.exe");
        QVERIFY(m_install->writeResource(QStringLiteral("Dmqv32.exe"), "#!/bin/sh\n"));
        more->click();   // present but not executable
        QCOMPARE(m_boxes->boxes, (QStringList{viewerMissing, viewerFailed}));
        QVERIFY(started.isEmpty());

        QFile(viewer).setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        more->click();
        QCOMPARE(started, QStringList{viewer + QLatin1Char('|') + path});
        starts = false;
        more->click();
        QCOMPARE(m_boxes->boxes, (QStringList{viewerMissing, viewerFailed, viewerFailed}));
    }
};

SC_TEST(TestQuickView)
#include "tst_quickview.moc"
