#include "ColorFileInstallation.h"
#include "FontHelper.h"
#include "SCAppStyle.h"
#include "TestMain.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QScreen>
#include <QScrollBar>
#include <QStyleFactory>
#include <QStyleOptionSlider>
#include <QTest>

#include <memory>

namespace {

template <class Base>
bool isTemplate(const QStyle* style)
{
    return dynamic_cast<const SCAppStyleTemplate<Base>*>(style) != nullptr;
}

// The base-style tag of the style template, by name.
QString templateOf(const QStyle* style)
{
    if (isTemplate<BaseStyle::QWindowsStyle>(style))
        return QStringLiteral("QWindowsStyle");
    if (isTemplate<BaseStyle::QPlastiqueStyle>(style))
        return QStringLiteral("QPlastiqueStyle");
    if (isTemplate<BaseStyle::QMacStyle>(style))
        return QStringLiteral("QMacStyle");
    if (isTemplate<BaseStyle::QCDEStyle>(style))
        return QStringLiteral("QCDEStyle");
    if (isTemplate<BaseStyle::QMotifStyle>(style))
        return QStringLiteral("QMotifStyle");
    return QString();
}

} // namespace

class StyleTest : public QObject
{
    Q_OBJECT

private slots:
    void answersCustomMetricsByScreenSize()
    {
        const QSize normal(1024, 767);
        const QSize large(1280, 1024);
        QVERIFY(!SCAppStyle::isLargeScreen(normal));
        QVERIFY(!SCAppStyle::isLargeScreen(QSize(1023, 768)));
        QVERIFY(SCAppStyle::isLargeScreen(QSize(1024, 768)));

        const int expected[][3] = {{1, 460, 570}, {9, 200, 280}, {12, 12, 12}};   // number, normal, large
        for (const auto& [number, normalValue, largeValue] : expected) {
            QCOMPARE(SCAppStyle::customPixelMetric(number, normal), std::optional<int>(normalValue));
            QCOMPARE(SCAppStyle::customPixelMetric(number, large), std::optional<int>(largeValue));
        }
        for (const int unanswered : {-1, 0, 5, 13, 100})
            QVERIFY(!SCAppStyle::customPixelMetric(unanswered, large));

        // Through the style: the primary screen decides; unanswered numbers reach the base.
        std::unique_ptr<QStyle> style(SCAppStyle::createStyle(QStringLiteral("QWindowsStyle")));
        const QSize screen = QGuiApplication::primaryScreen()->geometry().size();
        QCOMPARE(style->pixelMetric(QStyle::PixelMetric(SCAppStyle::PM_PageWidth)),
                 *SCAppStyle::customPixelMetric(1, screen));
        QCOMPARE(style->pixelMetric(QStyle::PixelMetric(SCAppStyle::PM_ModeDividerWidth)),
                 *SCAppStyle::customPixelMetric(9, screen));
        const std::unique_ptr<QStyle> windows(QStyleFactory::create(QStringLiteral("Windows")));
        for (const int number : {0, 5, 13}) {
            const auto metric = QStyle::PixelMetric(QStyle::PM_CustomBase + number);
            QCOMPARE(style->pixelMetric(metric), windows->pixelMetric(metric));
        }
    }

    void fontScale()
    {
        QCOMPARE(FontHelper::scaleForWidth(249.0f), 0.74814814f);
        QCOMPARE(FontHelper::scaleForWidth(250.0f), 250.0f / 405.0f);
        QCOMPARE(FontHelper::scaleForWidth(405.0f), 1.0f);

        // A reference family that is not installed leaves the fonts unscaled,
        // whatever substitute the font configuration would measure instead.
        QCOMPARE(FontHelper::scaleForFamily(QStringLiteral("No Such Reference Family 7f3a")), 1.0f);
        // An installed one is measured as before.
        const QString installed = QFontDatabase::families().value(0);
        QVERIFY2(!installed.isEmpty(), "no font installed");
        const QFont font(installed, 10);
        const float width = float(QFontMetrics(font).horizontalAdvance(
            QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz")));
        QCOMPARE(FontHelper::scaleForFamily(installed), FontHelper::scaleForWidth(width));
    }

    void createsStyleByName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("expectedTemplate");
        QTest::addColumn<QString>("expectedBase");

        QTest::newRow("windows") << "QWindowsStyle" << "QWindowsStyle" << "windows";
        QTest::newRow("plastique") << "QPlastiqueStyle" << "QPlastiqueStyle" << "fusion";
        QTest::newRow("mac") << "MacStyle" << "QMacStyle" << "fusion";
        QTest::newRow("cde") << "QCDEStyle" << "QCDEStyle" << "windows";
        QTest::newRow("motif") << "QMotifStyle" << "QMotifStyle" << "windows";
        QTest::newRow("mac with Q") << "QMacStyle" << "QMacStyle" << "fusion";
        QTest::newRow("empty") << "" << "QMacStyle" << "fusion";
        QTest::newRow("lower case") << "qwindowsstyle" << "QMacStyle" << "fusion";
        QTest::newRow("unknown") << "Fusion" << "QMacStyle" << "fusion";
    }

    void createsStyleByName()
    {
        QFETCH(QString, name);
        QFETCH(QString, expectedTemplate);
        QFETCH(QString, expectedBase);

        const std::unique_ptr<QStyle> style(SCAppStyle::createStyle(name));
        const QString made = templateOf(style.get());
        QCOMPARE(made, expectedTemplate);

        const auto* proxy = qobject_cast<QProxyStyle*>(style.get());
        QVERIFY(proxy && proxy->baseStyle());
        if (expectedTemplate == QLatin1String("QMacStyle")
            && QStyleFactory::keys().contains(QStringLiteral("macOS"), Qt::CaseInsensitive))
            expectedBase = QStringLiteral("macos");
        QCOMPARE(proxy->baseStyle()->name().toLower(), expectedBase);
    }

    // Icons that widgets build before they show them (the tool bar's
    // extension arrow, the search field's clear button) are read when first
    // drawn, and then draw the base style's picture.
    void defersStandardIconsUntilDrawn()
    {
        const std::unique_ptr<QStyle> style(SCAppStyle::createStyle(QStringLiteral("MacStyle")));
        const QStyle* base = qobject_cast<QProxyStyle*>(style.get())->baseStyle();
        for (const QStyle::StandardPixmap which : {QStyle::SP_ToolBarHorizontalExtensionButton,
                                                   QStyle::SP_ToolBarVerticalExtensionButton,
                                                   QStyle::SP_LineEditClearButton, QStyle::SP_DialogOkButton}) {
            const QIcon icon = style->standardIcon(which);
            const QImage expected = base->standardIcon(which).pixmap(16).toImage();
            QVERIFY(!expected.isNull());
            QCOMPARE(icon.pixmap(16).toImage(), expected);
            QCOMPARE(icon.actualSize(QSize(16, 16)), base->standardIcon(which).actualSize(QSize(16, 16)));
        }
    }

    void laysOutScrollBarsWithoutArrows()
    {
        const std::unique_ptr<QStyle> style(SCAppStyle::createStyle(QString()));
        QStyleOptionSlider bar;
        bar.rect = QRect(0, 0, 14, 200);
        bar.orientation = Qt::Vertical;
        bar.minimum = 0;
        bar.maximum = 100;
        bar.pageStep = 100;
        const auto rect = [&](QStyle::SubControl part) {
            return style->subControlRect(QStyle::CC_ScrollBar, &bar, part);
        };

        bar.sliderPosition = 0;
        QCOMPARE(rect(QStyle::SC_ScrollBarSlider), QRect(0, 0, 14, 100));
        QVERIFY(rect(QStyle::SC_ScrollBarSubPage).isEmpty());
        QCOMPARE(rect(QStyle::SC_ScrollBarAddPage), QRect(0, 100, 14, 100));
        QVERIFY(rect(QStyle::SC_ScrollBarAddLine).isEmpty());
        QVERIFY(rect(QStyle::SC_ScrollBarSubLine).isEmpty());
        QCOMPARE(rect(QStyle::SC_ScrollBarGroove), bar.rect);

        bar.sliderPosition = 100;
        QCOMPARE(rect(QStyle::SC_ScrollBarSlider), QRect(0, 100, 14, 100));
        QCOMPARE(style->hitTestComplexControl(QStyle::CC_ScrollBar, &bar, QPoint(7, 50)),
                 QStyle::SC_ScrollBarSubPage);

        // A huge range keeps the slider at its minimum length; no range fills the groove.
        bar.maximum = 1000000;
        bar.pageStep = 1;
        bar.sliderPosition = 1000000;
        const int minimum = style->pixelMetric(QStyle::PM_ScrollBarSliderMin);
        QCOMPARE(rect(QStyle::SC_ScrollBarSlider), QRect(0, 200 - minimum, 14, minimum));
        bar.maximum = 0;
        bar.sliderPosition = 0;
        QCOMPARE(rect(QStyle::SC_ScrollBarSlider), bar.rect);

        bar.orientation = Qt::Horizontal;
        bar.rect = QRect(0, 0, 300, 14);
        bar.maximum = 200;
        bar.pageStep = 100;
        bar.sliderPosition = 200;
        QCOMPARE(rect(QStyle::SC_ScrollBarSlider), QRect(200, 0, 100, 14));
    }

    void buildsPaletteFromColorFile()
    {
        ColorFileInstallation install("[ApplicationColors]\r\n"
                                      "DefaultBkg=10,20,30\r\n"
                                      "MenuAndButtonHighlight=1,2,3\r\n"
                                      "DisabledText=7,7,7\r\n"
                                      "Link=4,5,6\r\n",
                                      "[Settings]\r\n[Style]\r\nBaseStyle=QPlastiqueStyle\r\n");
        QVERIFY(install.isValid());
        const std::unique_ptr<QStyle> style(SCAppStyle::createStyle(QStringLiteral("MacStyle")));
        const QPalette palette = style->standardPalette();
        QCOMPARE(palette.color(QPalette::Window), QColor(10, 20, 30));
        QCOMPARE(palette.color(QPalette::Highlight), QColor(1, 2, 3));
        QCOMPARE(palette.color(QPalette::Link), QColor(4, 5, 6));
        QCOMPARE(palette.color(QPalette::Disabled, QPalette::Text), QColor(7, 7, 7));
        QCOMPARE(palette.color(QPalette::Base), QColor(255, 250, 235));

        // Missing colours are reported, once, all of them while the palette is built.
        QVERIFY(!install.messages.isEmpty());
        QVERIFY(install.messages.contains("Color Manager|Die Farbe >>DefaultControlBkg<< wurde nicht gefunden\nFarbdatei: "
                                          + install.colorFile()));
        QCOMPARE(install.messages.removeDuplicates(), 0);
        const int reported = int(install.messages.size());
        QCOMPARE(style->standardPalette(), palette);
        QCOMPARE(install.messages.size(), reported);

        const QString previousStyle = QApplication::style()->name();
        const QPalette previousPalette = QApplication::palette();
        const QFont previousFont = QApplication::font();
        SCAppStyle::installApplicationLook();
        QCOMPARE(templateOf(QApplication::style()), QStringLiteral("QPlastiqueStyle"));
        QCOMPARE(QApplication::palette().color(QPalette::Highlight), QColor(1, 2, 3));
        QCOMPARE(QApplication::font().pointSize(), 9);
        QCOMPARE(install.messages.size(), 2 * reported);   // a new style reports anew, once
        QApplication::setStyle(previousStyle);
        QApplication::setPalette(previousPalette);
        QApplication::setFont(previousFont);
    }

    void drawsWidgets()
    {
        const std::unique_ptr<QStyle> style(SCAppStyle::createStyle(QStringLiteral("QWindowsStyle")));
        QScrollBar bar(Qt::Vertical);
        bar.setStyle(style.get());
        bar.setRange(0, 10);
        bar.resize(14, 200);
        const QImage image = bar.grab().toImage();
        QVERIFY(image.pixelColor(7, 10) != image.pixelColor(7, 190));   // slider, groove
    }
};

SC_TEST(StyleTest)
#include "tst_style.moc"
