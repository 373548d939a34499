#pragma once

#include "SingletonSlot.h"

#include <map>
#include <memory>
#include <string>

class cIniFile;

// The process-wide resolver of named colours.
//
// Colours live in an INI file ("ColorDefs.ini" unless the configuration names
// another one) and are written in a small language:
//
//   colour     = base [ ("+" | "-") integer ]
//   base       = red "," green "," blue | name of another colour
//
// A top-level colour is looked up in the section given to init(); every colour
// it refers to is looked up in the section "ColorDefs". Lightness changes met
// along a chain of references add up and are applied once, in HSL, to the
// colour at the end of the chain. Every answer is cached, failures included, so
// that each problem is reported only once per init().
//
// A colour reference packs red, green and blue into the bytes 0, 1 and 2 of an
// unsigned int.
class ColorManager
{
public:
    static ColorManager* theInstance();
    // Destroys the instance and switches errors off; the next theInstance()
    // builds a fresh one. For tests.
    static void resetInstance();

    ~ColorManager();
    ColorManager(const ColorManager&) = delete;
    ColorManager& operator=(const ColorManager&) = delete;

    // Opens the colour file named by the setting "ColorDefsIni" of `section`
    // and empties the cache. `showErrors` switches the message boxes on or off.
    void init(const std::string& section, bool showErrors);

    unsigned int getColor(const std::string& name, unsigned int defaultColor) const;
    bool resolveColor(const std::string& expression, unsigned int& color) const;
    bool resolveColor(const std::string& expression, unsigned int& color, int& lightnessSum,
                      int& depth) const;
    // Splits a trailing "+n" or "-n" off the expression and adds it to `value`.
    bool processOperator(std::string& expression, int& value) const;

    void setColor(const std::string& name, unsigned int color);
    void clearColorCache();

    // --- Conversions -------------------------------------------------------
    static unsigned int rgb2colorRef(int r, int g, int b);
    static void colorRef2rgb(unsigned int color, int& r, int& g, int& b);
    static int clip(int value);   // to 0..255

    // Hue 0..360 (360 only by rounding), saturation and lightness 0..255.
    static void colorRef2hsl(unsigned int color, int& h, int& s, int& l);
    static unsigned int hsl2colorRef(int h, int s, int l);
    static int getRGBComponent(double m1, double m2, double t);

    // Y 0..255, U = blue - Y, V = red - Y.
    static void colorRef2yuv(unsigned int color, int& y, int& u, int& v);
    static unsigned int yuv2colorRef(int y, int u, int v);

    static unsigned int adjustByHSL(unsigned int color, int dh, int ds, int dl);
    static unsigned int adjustByYUV(unsigned int color, int dy);

    // "#RRGGBB" in upper-case hex digits.
    static std::string rgb2htmlColor(int r, int g, int b);
    static std::string colorRef2htmlColor(unsigned int color);

    // Shows the formatted message and the colour file's path in a box titled
    // "Color Manager", if errors are switched on.
    static void showError(const char* format, const std::string& arg);

private:
    friend class SingletonSlot<ColorManager>;
    ColorManager();
    std::string readColorFile(const std::string& section, const std::string& key) const;

    mutable std::map<std::string, unsigned int> m_cache;
    std::string m_section;
    std::unique_ptr<cIniFile> m_colorFile;
    static bool m_showErrors;
    static std::string m_colorFilePath;   // of the last init(), named in the boxes
};
