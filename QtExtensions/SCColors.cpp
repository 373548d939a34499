#include "SCColors.h"

#include "ColorManager.h"

#include <QGuiApplication>
#include <QLinearGradient>
#include <QWidget>

namespace {

const QColor defaultBkg(255, 250, 235);
const QColor defaultControlBkg(255, 250, 235);
const QColor defaultControlButtonBkg(Qt::darkGray);
const QColor defaultMenuAndButtonHighlight(103, 141, 178);
const QColor defaultRedFredBkg(254, 238, 231);
const QColor defaultThemenfilterBkg(240, 240, 255);
const QColor defaultAssistBkg(240, 240, 255);
const QColor defaultSplitterFrame(136, 127, 98);
const QColor defaultErrorBkg(255, 188, 181);
const QColor defaultWarningBkg;   // invalid; packs to black
const QColor defaultTableBkg(170, 170, 170);
const QColor defaultControlReadonlyText(0, 0, 153);
const QColor defaultControlReadonlyBkg(Qt::darkGray);
const QColor defaultDisabledText(128, 128, 128);
const QColor defaultLink(0, 0, 153);
const QColor defaultLinkVisited(153, 0, 153);
const QColor defaultDatePickerBkg(230, 230, 230);
const QColor defaultDatePickerFg(0, 0, 0);
const QColor defaultDatePickerWeekdaysBkg(255, 255, 255);
const QColor defaultDatePickerWeekendBkg(252, 232, 224);
const QColor defaultDatePickerSelection(255, 234, 168);
const QColor defaultDatePickerOtherMonthBkg(215, 215, 215);
const QColor defaultDatePickerOtherMonthFg(255, 255, 255);
const QColor defaultNavHighlightHigh(255, 234, 168);
const QColor defaultNavHighlightLow(255, 255, 0);
const QColor defaultControlHighlightBkgHigh(255, 234, 168);
const QColor defaultControlHighlightBkgLow(255, 255, 0);
const QColor defaultSplitterTitleHigh(255, 234, 168);
const QColor defaultSplitterTitleLow(255, 255, 128);

QPalette applicationPalette()
{
    return QGuiApplication::instance() ? QGuiApplication::palette() : QPalette();
}

// The dialog colours start from the application palette. They are taken on
// first use rather than during static initialisation, because the
// application palette must not be touched before the application object
// exists.
struct DialogColors
{
    QColor background;
    QColor foreground;
    QColor top;
    QColor bottom;
};

DialogColors& dialogColors()
{
    static DialogColors colors = [] {
        const QPalette palette = applicationPalette();
        const QColor button = palette.color(QPalette::Button);
        return DialogColors{button, palette.color(QPalette::ButtonText), button, button};
    }();
    return colors;
}

// A colour with a system palette fallback for low-colour displays.
QColor colorOrSystem(const char* key, const QColor& defaultColor, QPalette::ColorRole lowColorRole)
{
    if (!SCColors::isHighColorMode())
        return SCColors::getSysColor(lowColorRole);
    return SCColors::getColor(key, defaultColor);
}

// A colour with a second entry of the colour file for low-colour displays.
QColor highOrLowColor(const char* highKey, const QColor& highDefault, const char* lowKey,
                      const QColor& lowDefault)
{
    if (!SCColors::isHighColorMode())
        return SCColors::getColor(lowKey, lowDefault);
    return SCColors::getColor(highKey, highDefault);
}

void setPaletteBrush(QWidget* widget, QPalette::ColorRole role, const QBrush& brush)
{
    if (!widget)
        return;
    QPalette palette = widget->palette();
    palette.setBrush(role, brush);
    widget->setPalette(palette);
}

} // namespace

bool SCColors::isHighColorMode()
{
    return true;
}

QColor SCColors::getColor(const QString& key, QColor defaultColor)
{
    const unsigned int colorRef = ColorManager::theInstance()->getColor(
        key.toLatin1().toStdString(), toColorRef(defaultColor));
    return fromColorRef(colorRef);
}

QColor SCColors::getColorFromIni(const QString&, const QString& key, QColor defaultColor)
{
    return getColor(key, defaultColor);
}

unsigned int SCColors::toColorRef(QColor color)
{
    return unsigned(color.red()) + unsigned(color.green()) * 256u + unsigned(color.blue()) * 65536u;
}

QColor SCColors::fromColorRef(unsigned int colorRef)
{
    int r = 0;
    int g = 0;
    int b = 0;
    ColorManager::colorRef2rgb(colorRef, r, g, b);
    return QColor(r, g, b, 255);
}

QString SCColors::toHtmlColor(QColor color)
{
    return QString::fromLatin1(
        ColorManager::rgb2htmlColor(color.red(), color.green(), color.blue()).c_str());
}

QColor SCColors::mixColor(const QColor& a, int pa, const QColor& b, int pb)
{
    const auto mix = [pa, pb](int x, int y) {
        const long long channel = (static_cast<long long>(x) * pa + static_cast<long long>(y) * pb)
            / 100 % 256;
        return int(channel < 0 ? channel + 256 : channel);
    };
    return QColor(mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue()), 255);
}

QColor SCColors::getSysColor(QPalette::ColorRole role)
{
    return applicationPalette().color(QPalette::Active, role);
}

QColor SCColors::getDefaultBackgroundColor()
{
    return colorOrSystem(keyDefaultBkg, defaultBkg, QPalette::Base);
}

QColor SCColors::getDefaultControlBackgroundColor()
{
    return colorOrSystem(keyDefaultControlBkg, defaultControlBkg, QPalette::Base);
}

QColor SCColors::getButtonBackgroundColor()
{
    return colorOrSystem(keyControlButtonBkg, defaultControlButtonBkg, QPalette::Button);
}

QColor SCColors::getMenuHighlightColor()
{
    return getColor(keyMenuAndButtonHighlight, defaultMenuAndButtonHighlight);
}

QColor SCColors::getRedFredBackgroundColor()
{
    return colorOrSystem(keyRedFredBkg, defaultRedFredBkg, QPalette::Base);
}

QColor SCColors::getThemenfilterBackgroundColor()
{
    return colorOrSystem(keyThemenfilterBkg, defaultThemenfilterBkg, QPalette::Base);
}

QColor SCColors::getAssistentenBackgroundColor()
{
    return colorOrSystem(keyAssistBkg, defaultAssistBkg, QPalette::Base);
}

QColor SCColors::getSplitterFrameColor()
{
    return colorOrSystem(keySplitterFrame, defaultSplitterFrame, QPalette::Base);
}

QColor SCColors::getErrorBackgroundColor()
{
    return colorOrSystem(keyErrorBkg, defaultErrorBkg, QPalette::Base);
}

QColor SCColors::getWarningBackgroundColor()
{
    return colorOrSystem(keyWarningBkg, defaultWarningBkg, QPalette::Base);
}

QColor SCColors::getTableBackgroundColor()
{
    return colorOrSystem(keyTableBkg, defaultTableBkg, QPalette::Window);
}

QColor SCColors::getReadonlyTextColor()
{
    return getColor(keyControlReadonlyText, defaultControlReadonlyText);
}

QColor SCColors::getReadonlyBackgroundColor()
{
    return getColor(keyControlReadonlyBkg, defaultControlReadonlyBkg);
}

QColor SCColors::getDisabledBackgroundColor()
{
    return getColor(keyControlDisabledBkg, getReadonlyBackgroundColor());
}

QColor SCColors::getDisabledTextColor()
{
    return getColor(keyDisabledText, defaultDisabledText);
}

QColor SCColors::getDefaultLinkColor()
{
    return getColor(keyLink, defaultLink);
}

QColor SCColors::getDefaultLinkVisitedColor()
{
    return getColor(keyLinkVisited, defaultLinkVisited);
}

QColor SCColors::getDatePickerBackgroundColor()
{
    return getColor(keyDatePickerBkg, defaultDatePickerBkg);
}

QColor SCColors::getDatePickerForegroundColor()
{
    return getColor(keyDatePickerFg, defaultDatePickerFg);
}

QColor SCColors::getDatePickerWeekdaysBackgroundColor()
{
    return getColor(keyDatePickerWeekdaysBkg, defaultDatePickerWeekdaysBkg);
}

QColor SCColors::getDatePickerWeekendBackgroundColor()
{
    return getColor(keyDatePickerWeekendBkg, defaultDatePickerWeekendBkg);
}

QColor SCColors::getDatePickerSelectionColor()
{
    return getColor(keyDatePickerSelection, defaultDatePickerSelection);
}

QColor SCColors::getDatePickerOtherMonthBackgroundColor()
{
    return getColor(keyDatePickerOtherMonthBkg, defaultDatePickerOtherMonthBkg);
}

QColor SCColors::getDatePickerOtherMonthForegroundColor()
{
    return getColor(keyDatePickerOtherMonthFg, defaultDatePickerOtherMonthFg);
}

QColor SCColors::getDefaultSelectionColor()
{
    return highOrLowColor(keyNavHighlightHigh, defaultNavHighlightHigh, keyNavHighlightLow,
                          defaultNavHighlightLow);
}

QColor SCColors::getDialogSelectionColor()
{
    return highOrLowColor(keyControlHighlightBkgHigh, defaultControlHighlightBkgHigh,
                          keyControlHighlightBkgLow, defaultControlHighlightBkgLow);
}

QColor SCColors::getSplitterTitleBackgroundColor()
{
    return highOrLowColor(keySplitterTitleHigh, defaultSplitterTitleHigh, keySplitterTitleLow,
                          defaultSplitterTitleLow);
}

void SCColors::setDialogGradientColors(QColor top, QColor bottom)
{
    DialogColors& colors = dialogColors();
    colors.top = top;
    colors.bottom = bottom;
    colors.background = mixColor(top, 50, bottom, 50);
}

void SCColors::setDialogForegroundColor(QColor color)
{
    dialogColors().foreground = color;
}

void SCColors::setDialogBackgroundColor(QColor color)
{
    dialogColors().background = color;
}

QColor SCColors::getDialogForegroundColor()
{
    if (!isHighColorMode())
        return getSysColor(QPalette::WindowText);
    return dialogColors().foreground;
}

QColor SCColors::getDialogBackgroundColor()
{
    if (!isHighColorMode())
        return getSysColor(QPalette::Window);
    return dialogColors().background;
}

QBrush SCColors::getDialogBackgroundBrush()
{
    const DialogColors& colors = dialogColors();
    QLinearGradient gradient(0.0, 0.0, 0.0, 1.0);
    gradient.setCoordinateMode(QGradient::ObjectBoundingMode);
    gradient.setColorAt(0.0, colors.top);
    gradient.setColorAt(1.0, colors.bottom);
    return QBrush(gradient);
}

void SCColors::setBackgroundColor(QWidget* widget, const QColor& color)
{
    setPaletteBrush(widget, QPalette::Window, color);
}

void SCColors::setForegroundColor(QWidget* widget, const QColor& color)
{
    setPaletteBrush(widget, QPalette::WindowText, color);
}

void SCColors::setBackgroundBrush(QWidget* widget, const QBrush& brush)
{
    setPaletteBrush(widget, QPalette::Window, brush);
}

QColor SCColors::getAlphaLightColor() { return QColor(255, 255, 255, 224); }
QColor SCColors::getAlphaMidLightColor() { return QColor(255, 255, 255, 128); }
QColor SCColors::getAlphaMidColor() { return QColor(0, 0, 0, 64); }
QColor SCColors::getAlphaDarkColor() { return QColor(0, 0, 0, 128); }
QColor SCColors::getPostItColor() { return QColor(255, 255, 204); }
QColor SCColors::getDesignDarkBlue() { return QColor(0, 30, 82); }
QColor SCColors::getSplitterTitleFontColor() { return QColor(0, 0, 128); }
