#pragma once

#include <QBrush>
#include <QColor>
#include <QPalette>
#include <QString>

class QWidget;

// The catalogue of the launcher's named colours. Each colour is asked for by
// name from ColorManager, in the section sectColors of the colour file; a
// colour the file does not define falls back to the default built in here.
class SCColors
{
public:
    static constexpr const char* sectColors = "ApplicationColors";

    // --- Keys of the colours with a getter below ------------------------------
    static constexpr const char* keyDefaultBkg = "DefaultBkg";
    static constexpr const char* keyDefaultControlBkg = "DefaultControlBkg";
    static constexpr const char* keyControlButtonBkg = "ControlButtonBkg";
    static constexpr const char* keyMenuAndButtonHighlight = "MenuAndButtonHighlight";
    static constexpr const char* keyRedFredBkg = "RedFredBkg";
    static constexpr const char* keyThemenfilterBkg = "ThemenfilterBkg";
    static constexpr const char* keyAssistBkg = "AssistBkg";
    static constexpr const char* keySplitterFrame = "SplitterFrame";
    static constexpr const char* keyErrorBkg = "ErrorBkg";
    static constexpr const char* keyWarningBkg = "WarningBkg";
    static constexpr const char* keyTableBkg = "TableBkg";
    static constexpr const char* keyControlReadonlyText = "ControlReadonlyText";
    static constexpr const char* keyControlReadonlyBkg = "ControlReadonlyBkg";
    static constexpr const char* keyControlDisabledBkg = "ControlDisabledBkg";
    static constexpr const char* keyDisabledText = "DisabledText";
    static constexpr const char* keyLink = "Link";
    static constexpr const char* keyLinkVisited = "LinkVisited";
    static constexpr const char* keyDatePickerBkg = "DatePickerBkg";
    static constexpr const char* keyDatePickerFg = "DatePickerFg";
    static constexpr const char* keyDatePickerWeekdaysBkg = "DatePickerWeekdaysBkg";
    static constexpr const char* keyDatePickerWeekendBkg = "DatePickerWeekendBkg";
    static constexpr const char* keyDatePickerSelection = "DatePickerSelection";
    static constexpr const char* keyDatePickerOtherMonthBkg = "DatePickerOtherMonthBkg";
    static constexpr const char* keyDatePickerOtherMonthFg = "DatePickerOtherMonthFg";
    static constexpr const char* keyNavHighlightHigh = "NavHighlightHigh";
    static constexpr const char* keyNavHighlightLow = "NavHighlightLow";
    static constexpr const char* keyControlHighlightBkgHigh = "ControlHighlightBkgHigh";
    static constexpr const char* keyControlHighlightBkgLow = "ControlHighlightBkgLow";
    static constexpr const char* keySplitterTitleHigh = "SplitterTitleHigh";
    static constexpr const char* keySplitterTitleLow = "SplitterTitleLow";

    // --- Keys for which callers pass their own defaults -----------------------
    static constexpr const char* keyToolbarBase = "ToolbarBase";
    static constexpr const char* keyNormalToolbarText = "NormalToolbarText";
    static constexpr const char* keyDisabledToolbarText = "DisabledToolbarText";
    static constexpr const char* keyMainWindowGradientTop = "MainWindowGradientTop";
    static constexpr const char* keyMainWindowGradientBottom = "MainWindowGradientBottom";
    static constexpr const char* keyToolbarGradientTop = "ToolbarGradientTop";
    static constexpr const char* keyToolbarGradientBottom = "ToolbarGradientBottom";
    static constexpr const char* keyStatusbarGradientTop = "StatusbarGradientTop";
    static constexpr const char* keyStatusbarGradientBottom = "StatusbarGradientBottom";
    static constexpr const char* keyDialogbarGradientTop = "DialogbarGradientTop";
    static constexpr const char* keyDialogbarGradientBottom = "DialogbarGradientBottom";
    static constexpr const char* keyBackground = "Background";
    static constexpr const char* keyNormalText = "NormalText";
    static constexpr const char* keyDark = "Dark";
    static constexpr const char* keyLight = "Light";
    static constexpr const char* keyInfoTabActiveTop = "InfoTabActiveTop";
    static constexpr const char* keyInfoTabActiveBottom = "InfoTabActiveBottom";
    static constexpr const char* keyInfoTabInactiveTop = "InfoTabInactiveTop";
    static constexpr const char* keyInfoTabInactiveBottom = "InfoTabInactiveBottom";
    static constexpr const char* keyFrameTitleTop = "FrameTitleTop";
    static constexpr const char* keyFrameTitleBottom = "FrameTitleBottom";
    static constexpr const char* keyMenuBackground = "MenuBackground";
    static constexpr const char* keyDefaultFrg = "DefaultFrg";
    static constexpr const char* keyPrueferBkg = "PrueferBkg";
    static constexpr const char* keySplitterTitleGray = "SplitterTitleGray";
    static constexpr QColor defaultSplitterTitleGray{144, 155, 166};
    static constexpr const char* keySensiHighlight = "SensiHighlight";
    static constexpr const char* keyPenHighlight = "PenHighlight";
    static constexpr const char* keySteuererstattungFontColor = "SteuererstattungFontColor";
    static constexpr const char* keySteuernachzahlungFontColor = "SteuernachzahlungFontColor";

    // Always true; the low-colour branches of the getters are kept for
    // displays with a small palette.
    static bool isHighColorMode();

    // --- Lookup and conversion -----------------------------------------------
    static QColor getColor(const QString& key, QColor defaultColor);
    // All colours come from the one colour file: the first argument is ignored.
    static QColor getColorFromIni(const QString& ignoredSection, const QString& key,
                                  QColor defaultColor);
    static unsigned int toColorRef(QColor color);
    static QColor fromColorRef(unsigned int colorRef);
    static QString toHtmlColor(QColor color);
    // Per channel (a * pa + b * pb) / 100, wrapped modulo 256; weights are percentages.
    static QColor mixColor(const QColor& a, int pa, const QColor& b, int pb);
    static QColor getSysColor(QPalette::ColorRole role);

    // --- Named colours -------------------------------------------------------
    static QColor getDefaultBackgroundColor();
    static QColor getDefaultControlBackgroundColor();
    static QColor getButtonBackgroundColor();
    static QColor getMenuHighlightColor();
    static QColor getRedFredBackgroundColor();
    static QColor getThemenfilterBackgroundColor();
    static QColor getAssistentenBackgroundColor();
    static QColor getSplitterFrameColor();
    static QColor getErrorBackgroundColor();
    static QColor getWarningBackgroundColor();
    static QColor getTableBackgroundColor();
    static QColor getReadonlyTextColor();
    static QColor getReadonlyBackgroundColor();
    static QColor getDisabledBackgroundColor();
    static QColor getDisabledTextColor();
    static QColor getDefaultLinkColor();
    static QColor getDefaultLinkVisitedColor();
    static QColor getDatePickerBackgroundColor();
    static QColor getDatePickerForegroundColor();
    static QColor getDatePickerWeekdaysBackgroundColor();
    static QColor getDatePickerWeekendBackgroundColor();
    static QColor getDatePickerSelectionColor();
    static QColor getDatePickerOtherMonthBackgroundColor();
    static QColor getDatePickerOtherMonthForegroundColor();
    static QColor getDefaultSelectionColor();
    static QColor getDialogSelectionColor();
    static QColor getSplitterTitleBackgroundColor();

    // --- Dialog colours ------------------------------------------------------
    // Both gradient colours are kept; the background becomes their even mix.
    static void setDialogGradientColors(QColor top, QColor bottom);
    static void setDialogForegroundColor(QColor color);
    static void setDialogBackgroundColor(QColor color);
    static QColor getDialogForegroundColor();
    static QColor getDialogBackgroundColor();
    // A vertical gradient from the top to the bottom dialog colour.
    static QBrush getDialogBackgroundBrush();

    // --- Widget palettes (all colour groups) ---------------------------------
    static void setBackgroundColor(QWidget* widget, const QColor& color);   // role Window
    static void setForegroundColor(QWidget* widget, const QColor& color);   // role WindowText
    static void setBackgroundBrush(QWidget* widget, const QBrush& brush);   // role Window

    // --- Fixed colours -------------------------------------------------------
    static QColor getAlphaLightColor();
    static QColor getAlphaMidLightColor();
    static QColor getAlphaMidColor();
    static QColor getAlphaDarkColor();
    static QColor getPostItColor();
    static QColor getDesignDarkBlue();
    static QColor getSplitterTitleFontColor();
};
