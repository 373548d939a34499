#include "TestMain.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QTest>
#include <QTranslator>

// The bundle carries Qt's German translation, so the standard buttons of
// every box and dialog read German.
class TranslationTest : public QObject
{
    Q_OBJECT

private slots:
    void standardButtonsReadGerman()
    {
        QTranslator translator;
        QVERIFY(translator.load(QStringLiteral(SC_BUNDLE_RESOURCES_DIR "qt_de.qm")));
        QCoreApplication::installTranslator(&translator);

        QDialogButtonBox buttons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Open);
        QCOMPARE(buttons.button(QDialogButtonBox::Cancel)->text(), QStringLiteral("Abbrechen"));
        QCOMPARE(buttons.button(QDialogButtonBox::Open)->text(), QString::fromUtf8("\xC3\x96" "ffnen"));

        QCoreApplication::removeTranslator(&translator);
        const QDialogButtonBox untranslated(QDialogButtonBox::Cancel);
        QCOMPARE(untranslated.button(QDialogButtonBox::Cancel)->text().remove(QLatin1Char('&')),
                 QStringLiteral("Cancel"));
    }
};

SC_TEST(TranslationTest)
#include "tst_translation.moc"
