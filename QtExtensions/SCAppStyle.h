#pragma once

#include <QIcon>
#include <QPalette>
#include <QProxyStyle>
#include <QSize>
#include <QString>

#include <optional>

// The launcher's look: its own drawing layer and window geometry over a Qt
// base style that the setting "Style"/"BaseStyle" names.
//
// Design: the settings name five classic base styles. Qt 6 offers their
// looks through the style factory only, so the drawing layer is one
// QProxyStyle, SCAppStyle, written once, that wraps a factory style. Each
// setting value has a tag type in namespace BaseStyle that names the factory
// style to wrap, and SCAppStyleTemplate<Tag> is the style for that setting:
//
//   SCAppStyleTemplate<BaseStyle::QWindowsStyle>    "Windows"
//   SCAppStyleTemplate<BaseStyle::QPlastiqueStyle>  "Fusion"
//   SCAppStyleTemplate<BaseStyle::QMacStyle>        "macOS", else "Fusion"
//   SCAppStyleTemplate<BaseStyle::QCDEStyle>        "Windows"
//   SCAppStyleTemplate<BaseStyle::QMotifStyle>      "Windows"
//
// A factory style that this system lacks is replaced by "Fusion".
class SCAppStyle : public QProxyStyle
{
    Q_OBJECT

public:
    // Custom metrics, counted from PM_CustomBase, that fix the geometry of
    // the main window. Each has one value for normal and one for large screens.
    enum CustomMetric {
        PM_PageWidth = PM_CustomBase + 1,
        PM_PageHeight = PM_CustomBase + 2,
        PM_MainWindowWidth = PM_CustomBase + 3,
        PM_MainWindowHeight = PM_CustomBase + 4,
        PM_HeaderPictureWidth = PM_CustomBase + 7,
        PM_HeaderPictureHeight = PM_CustomBase + 8,
        PM_ModeDividerWidth = PM_CustomBase + 9,
    };

    // The style for a "BaseStyle" setting (exact, case-sensitive names; any
    // other name, also an empty one, gives the Mac style). The caller owns it.
    static QStyle* createStyle(const QString& baseStyleName);

    // Installs in the application the style for the "[Style] BaseStyle"
    // setting, the style's palette and the launcher's font (Arial, 9 points).
    // Building the palette opens the colour file, so a faulty one is reported
    // here.
    static void installApplicationLook();

    // Large: at least 1024 x 768 pixels.
    static bool isLargeScreen(const QSize& screenSize);
    // The custom metric `number` (counted from PM_CustomBase) for a screen of
    // that size; nothing for the numbers the style leaves to its base.
    static std::optional<int> customPixelMetric(int number, const QSize& screenSize);

    int pixelMetric(PixelMetric metric, const QStyleOption* option = nullptr,
                    const QWidget* widget = nullptr) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                         SubControl subControl, const QWidget* widget = nullptr) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget = nullptr) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget = nullptr) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget = nullptr) const override;
    // Opens the colour file and builds the palette from the application
    // colours, once per style object: Qt asks again whenever it recomputes
    // the application palette, and every faulty colour is to be reported once.
    QPalette standardPalette() const override;
    // The tool bar's extension arrows are read when they are first drawn.
    QIcon standardIcon(StandardPixmap standardIcon, const QStyleOption* option = nullptr,
                       const QWidget* widget = nullptr) const override;

protected:
    // Wraps the factory style of that name (or "Fusion" if it is missing).
    explicit SCAppStyle(const QString& factoryStyleName);

private:
    mutable std::optional<QPalette> m_palette;
};

// The base styles a "BaseStyle" setting can name, each with the factory
// style that gives its look.
namespace BaseStyle {
struct QWindowsStyle { static constexpr const char* factoryName = "Windows"; };
struct QPlastiqueStyle { static constexpr const char* factoryName = "Fusion"; };
struct QMacStyle { static constexpr const char* factoryName = "macOS"; };
struct QCDEStyle { static constexpr const char* factoryName = "Windows"; };
struct QMotifStyle { static constexpr const char* factoryName = "Windows"; };
} // namespace BaseStyle

template <class Base>
class SCAppStyleTemplate : public SCAppStyle
{
public:
    SCAppStyleTemplate()
        : SCAppStyle(QString::fromLatin1(Base::factoryName))
    {
    }
};
