#include "SCAppStyle.h"

#include "ColorManager.h"
#include "NvWinIni.h"
#include "SCColors.h"

#include <QApplication>
#include <QIconEngine>
#include <QLinearGradient>
#include <QPainter>
#include <QPointer>
#include <QScreen>
#include <QStyleFactory>
#include <QStyleOption>
#include <QToolBar>

#include <algorithm>

namespace {

struct CustomMetricValues
{
    int normal;
    int large;
};

// Indexed by the metric's number counted from PM_CustomBase; number 5 is
// left to the base style.
constexpr int customMetricCount = 12;
constexpr std::optional<CustomMetricValues> customMetrics[customMetricCount + 1] = {
    std::nullopt,                      //  0: base style
    CustomMetricValues{460, 570},      //  1: page width
    CustomMetricValues{400, 440},      //  2: page height
    CustomMetricValues{740, 960},      //  3: main window width
    CustomMetricValues{544, 610},      //  4: main window height
    std::nullopt,                      //  5: base style
    CustomMetricValues{60, 70},        //  6
    CustomMetricValues{740, 960},      //  7: header picture width
    CustomMetricValues{82, 106},       //  8: header picture height
    CustomMetricValues{200, 280},      //  9: divider between the mode buttons
    CustomMetricValues{5, 20},         // 10
    CustomMetricValues{18, 18},        // 11
    CustomMetricValues{12, 12},        // 12
};

constexpr qreal cornerRadius = 3.0;

// A style this system lacks ("macOS" off the Mac) is replaced by Fusion,
// which every Qt build has.
QStyle* createFactoryStyle(const QString& name)
{
    QStyle* style = QStyleFactory::create(name);
    return style ? style : QStyleFactory::create(QStringLiteral("Fusion"));
}

QSize primaryScreenSize()
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? screen->geometry().size() : QSize();
}

// The named colours of the drawing layer. The tool-bar gradient defaults are
// those of the main window, which asks for the same names: the colour
// manager keeps the default of the first request for a missing name.
struct DrawingColors
{
    QColor sliderTop;
    QColor sliderBottom;
    QColor highlight;
    QColor frame;
    QColor groove;
};

DrawingColors drawingColors()
{
    return DrawingColors{
        SCColors::getColor(SCColors::keyToolbarGradientTop, QColor(68, 122, 210)),
        SCColors::getColor(SCColors::keyToolbarGradientBottom, QColor(50, 77, 127)),
        SCColors::getMenuHighlightColor(),
        SCColors::getSplitterFrameColor(),
        SCColors::getDefaultBackgroundColor().darker(106),
    };
}

// A rounded panel filled with a gradient running across `direction`.
void drawGradientPanel(QPainter* painter, const QRectF& rect, const QColor& start,
                       const QColor& end, const QColor& border, Qt::Orientation direction)
{
    const QRectF panel = rect.adjusted(0.5, 0.5, -0.5, -0.5);
    QLinearGradient gradient(panel.topLeft(),
                             direction == Qt::Vertical ? panel.bottomLeft() : panel.topRight());
    gradient.setColorAt(0.0, start);
    gradient.setColorAt(1.0, end);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(border);
    painter->setBrush(gradient);
    painter->drawRoundedRect(panel, cornerRadius, cornerRadius);
    painter->restore();
}

bool isPressed(const QStyleOption* option)
{
    return (option->state & QStyle::State_Enabled)
        && (option->state & (QStyle::State_Sunken | QStyle::State_On));
}

bool isHovered(const QStyleOption* option)
{
    return (option->state & QStyle::State_Enabled) && (option->state & QStyle::State_MouseOver);
}

// Push buttons: light gradient from the palette, framed; the highlight
// colour marks hovering and pressing.
void drawCommandButtonPanel(const QStyleOption* option, QPainter* painter)
{
    const DrawingColors colors = drawingColors();
    const QColor light = option->palette.color(QPalette::Light);
    const QColor button = option->palette.color(QPalette::Button);
    const QColor border = isHovered(option) || isPressed(option) ? colors.highlight : colors.frame;
    if (isPressed(option))
        drawGradientPanel(painter, option->rect, button, light, border, Qt::Vertical);
    else
        drawGradientPanel(painter, option->rect, light, button, border, Qt::Vertical);
}

// Tool buttons sit on tool bars of any colour; their panel (shown while
// hovered, pressed or checked) is a gradient of the highlight colour.
void drawToolButtonPanel(const QStyleOption* option, QPainter* painter)
{
    const QColor highlight = drawingColors().highlight;
    if (isPressed(option))
        drawGradientPanel(painter, option->rect, highlight.darker(115), highlight,
                          highlight.darker(140), Qt::Vertical);
    else
        drawGradientPanel(painter, option->rect, highlight.lighter(130), highlight,
                          highlight.darker(125), Qt::Vertical);
}

// The keyboard focus on a tool bar button: a frame in the bar's text colour,
// which stands out on a bar of any colour where the base style's tinted
// frame does not.
bool drawToolBarFocusFrame(const QStyleOption* option, QPainter* painter, const QWidget* widget)
{
    if (!widget || !qobject_cast<const QToolBar*>(widget->parentWidget()))
        return false;
    if (option->state & QStyle::State_KeyboardFocusChange) {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(option->palette.color(QPalette::ButtonText));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius,
                                 cornerRadius);
        painter->restore();
    }
    return true;
}

void drawRoundedFrame(const QStyleOption* option, QPainter* painter)
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(drawingColors().frame);
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius,
                             cornerRadius);
    painter->restore();
}

// A standard icon of the base style, asked for when it is first drawn or
// measured. Every tool bar builds its extension button with its icon at once,
// though the button shows only when the bar is too short for its buttons;
// reading that icon's pictures is what brings Qt's image plug-ins into the
// process.
class DeferredStandardIconEngine : public QIconEngine
{
public:
    DeferredStandardIconEngine(const QStyle* style, QStyle::StandardPixmap which, const QStyleOption* option,
                               const QWidget* widget)
        : m_style(const_cast<QStyle*>(style))
        , m_widget(const_cast<QWidget*>(widget))
        , m_which(which)
    {
        if (option)
            m_option = *option;
    }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override
    {
        icon().paint(painter, rect, Qt::AlignCenter, mode, state);
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        return icon().pixmap(size, mode, state);
    }
    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state, qreal scale) override
    {
        return icon().pixmap(size, scale, mode, state);
    }
    QSize actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        return icon().actualSize(size, mode, state);
    }
    QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) override
    {
        return icon().availableSizes(mode, state);
    }
    QIconEngine* clone() const override { return new DeferredStandardIconEngine(*this); }
    bool isNull() override { return false; }

private:
    const QIcon& icon()
    {
        if (!m_icon) {
            const QStyle* style = m_style ? m_style.data() : QApplication::style();
            m_icon = style->standardIcon(m_which, m_option ? &*m_option : nullptr, m_widget.data());
        }
        return *m_icon;
    }

    QPointer<QStyle> m_style;
    QPointer<QWidget> m_widget;
    QStyle::StandardPixmap m_which;
    std::optional<QStyleOption> m_option;   // the plain part, all an icon request looks at
    std::optional<QIcon> m_icon;
};

} // namespace

SCAppStyle::SCAppStyle(const QString& factoryStyleName)
    : QProxyStyle(createFactoryStyle(factoryStyleName))
{
}

QStyle* SCAppStyle::createStyle(const QString& baseStyleName)
{
    if (baseStyleName == QLatin1String("QWindowsStyle"))
        return new SCAppStyleTemplate<BaseStyle::QWindowsStyle>;
    if (baseStyleName == QLatin1String("QPlastiqueStyle"))
        return new SCAppStyleTemplate<BaseStyle::QPlastiqueStyle>;
    if (baseStyleName == QLatin1String("QCDEStyle"))
        return new SCAppStyleTemplate<BaseStyle::QCDEStyle>;
    if (baseStyleName == QLatin1String("QMotifStyle"))
        return new SCAppStyleTemplate<BaseStyle::QMotifStyle>;
    // "MacStyle", written without the "Q" of the others, and every other name.
    return new SCAppStyleTemplate<BaseStyle::QMacStyle>;
}

void SCAppStyle::installApplicationLook()
{
    QStyle* style = createStyle(
        QString::fromLatin1(cNvWinIni::theInstance()->GetString("Style", "BaseStyle", "").c_str()));
    QApplication::setStyle(style);
    QApplication::setPalette(style->standardPalette());

    QFont font = QApplication::font();
    font.setFamily(QStringLiteral("Arial"));
    font.setPointSize(9);
    QApplication::setFont(font);
}

bool SCAppStyle::isLargeScreen(const QSize& screenSize)
{
    return screenSize.width() >= 1024 && screenSize.height() >= 768;
}

std::optional<int> SCAppStyle::customPixelMetric(int number, const QSize& screenSize)
{
    if (number < 0 || number > customMetricCount || !customMetrics[number])
        return std::nullopt;
    return isLargeScreen(screenSize) ? customMetrics[number]->large : customMetrics[number]->normal;
}

int SCAppStyle::pixelMetric(PixelMetric metric, const QStyleOption* option,
                            const QWidget* widget) const
{
    if (metric >= PM_CustomBase) {
        if (const std::optional<int> value = customPixelMetric(metric - PM_CustomBase,
                                                               primaryScreenSize()))
            return *value;
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
    switch (metric) {
    case PM_DefaultFrameWidth:
        return 2;
    case PM_SplitterWidth:
        return 5;
    case PM_ScrollBarExtent:
        return 14;
    case PM_ScrollBarSliderMin:
        return 24;
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
    case PM_ExclusiveIndicatorWidth:
    case PM_ExclusiveIndicatorHeight:
        return 14;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

// Scroll bars have no arrow buttons: the slider runs along the whole groove.
QRect SCAppStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                                 SubControl subControl, const QWidget* widget) const
{
    const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (control != CC_ScrollBar || !bar)
        return QProxyStyle::subControlRect(control, option, subControl, widget);

    const QRect groove = bar->rect;
    const bool horizontal = bar->orientation == Qt::Horizontal;
    const int length = horizontal ? groove.width() : groove.height();
    const qint64 range = qint64(bar->maximum) - bar->minimum;
    const qint64 proportional =
        range > 0 ? qint64(length) * bar->pageStep / (range + bar->pageStep) : length;
    const int minimum = std::min(pixelMetric(PM_ScrollBarSliderMin, bar, widget), length);
    const int sliderLength = int(std::clamp<qint64>(proportional, minimum, length));
    const int sliderStart = sliderPositionFromValue(bar->minimum, bar->maximum, bar->sliderPosition,
                                                    length - sliderLength, bar->upsideDown);

    const auto span = [&](int from, int to) {
        const QRect rect = horizontal
            ? QRect(groove.x() + from, groove.y(), to - from, groove.height())
            : QRect(groove.x(), groove.y() + from, groove.width(), to - from);
        return visualRect(bar->direction, groove, rect);
    };
    switch (subControl) {
    case SC_ScrollBarGroove:
        return groove;
    case SC_ScrollBarSlider:
        return span(sliderStart, sliderStart + sliderLength);
    case SC_ScrollBarSubPage:
        return span(0, sliderStart);
    case SC_ScrollBarAddPage:
        return span(sliderStart + sliderLength, length);
    default:
        return QRect();
    }
}

void SCAppStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                               QPainter* painter, const QWidget* widget) const
{
    switch (element) {
    case PE_PanelButtonTool:
        drawToolButtonPanel(option, painter);
        return;
    case PE_PanelButtonCommand:
        drawCommandButtonPanel(option, painter);
        return;
    case PE_Frame:
        drawRoundedFrame(option, painter);
        return;
    case PE_FrameFocusRect:
        if (!drawToolBarFocusFrame(option, painter, widget))
            QProxyStyle::drawPrimitive(element, option, painter, widget);
        return;
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void SCAppStyle::drawControl(ControlElement element, const QStyleOption* option,
                             QPainter* painter, const QWidget* widget) const
{
    if (element != CE_ToolBar) {
        QProxyStyle::drawControl(element, option, painter, widget);
        return;
    }
    // A tool bar runs from its button colour to its alternate-base colour, so
    // that a tool bar can set its own gradient through its palette.
    const bool horizontal = option->state & State_Horizontal;
    QLinearGradient gradient(option->rect.topLeft(),
                             horizontal ? option->rect.bottomLeft() : option->rect.topRight());
    gradient.setColorAt(0.0, option->palette.color(QPalette::Button));
    gradient.setColorAt(1.0, option->palette.color(QPalette::AlternateBase));
    painter->fillRect(option->rect, gradient);
}

void SCAppStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                    QPainter* painter, const QWidget* widget) const
{
    const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (control != CC_ScrollBar || !bar) {
        QProxyStyle::drawComplexControl(control, option, painter, widget);
        return;
    }
    const DrawingColors colors = drawingColors();
    painter->fillRect(bar->rect, colors.groove);
    if (!(bar->state & State_Enabled) || bar->maximum <= bar->minimum)
        return;

    const QRect slider = subControlRect(CC_ScrollBar, bar, SC_ScrollBarSlider, widget)
                             .adjusted(2, 2, -2, -2);
    const bool active = (bar->activeSubControls & SC_ScrollBarSlider)
        && (bar->state & (State_MouseOver | State_Sunken));
    const QColor start = active ? colors.highlight.lighter(120) : colors.sliderTop;
    const QColor end = active ? colors.highlight : colors.sliderBottom;
    // The gradient runs across the slider.
    const Qt::Orientation across =
        bar->orientation == Qt::Horizontal ? Qt::Vertical : Qt::Horizontal;
    drawGradientPanel(painter, slider, start, end, end.darker(120), across);
}

QPalette SCAppStyle::standardPalette() const
{
    if (m_palette)
        return *m_palette;

    ColorManager::theInstance()->init(SCColors::sectColors, true);

    const QColor window = SCColors::getDefaultBackgroundColor();
    const QColor base = SCColors::getDefaultControlBackgroundColor();
    // Same default as the main window's request for "Background": the colour
    // manager keeps the default of the first request for a missing name.
    const QColor button = SCColors::getColor(SCColors::keyBackground, QColor(245, 245, 245));
    const QColor light = SCColors::getColor(SCColors::keyLight, QColor(Qt::white));
    const QColor dark = SCColors::getColor(SCColors::keyDark, QColor(160, 160, 160));
    const QColor text = SCColors::getColor(SCColors::keyNormalText, QColor(Qt::black));
    const QColor windowText = SCColors::getColor(SCColors::keyDefaultFrg, QColor(Qt::black));
    const QColor disabledText = SCColors::getDisabledTextColor();

    QPalette palette(windowText, button, light, dark, SCColors::mixColor(light, 50, dark, 50), text,
                     QColor(Qt::white), base, window);
    palette.setColor(QPalette::AlternateBase, base.darker(104));
    palette.setColor(QPalette::Highlight, SCColors::getMenuHighlightColor());
    palette.setColor(QPalette::HighlightedText, QColor(Qt::white));
    palette.setColor(QPalette::Link, SCColors::getDefaultLinkColor());
    palette.setColor(QPalette::LinkVisited, SCColors::getDefaultLinkVisitedColor());
    palette.setColor(QPalette::ToolTipBase, SCColors::getPostItColor());
    palette.setColor(QPalette::ToolTipText, QColor(Qt::black));
    palette.setColor(QPalette::PlaceholderText, disabledText);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, disabledText);

    // The drawing layer's colours are read now as well, so that missing ones
    // are reported at start-up rather than from inside a paint event.
    drawingColors();

    m_palette = palette;
    return palette;
}

QIcon SCAppStyle::standardIcon(StandardPixmap which, const QStyleOption* option, const QWidget* widget) const
{
    const bool builtBeforeShown = which == SP_ToolBarHorizontalExtensionButton
        || which == SP_ToolBarVerticalExtensionButton || which == SP_LineEditClearButton;
    if (!builtBeforeShown)
        return QProxyStyle::standardIcon(which, option, widget);
    // The base style answers later, directly, so the answer is not deferred again.
    return QIcon(new DeferredStandardIconEngine(baseStyle(), which, option, widget));
}
