#include "ColorManager.h"

#include "ApplicationInfo.h"
#include "Configuration.h"
#include "CrossPlatformApi.h"
#include "IniFile.h"
#include "StreamTokenizer.h"
#include "StringFunctions.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <sstream>

namespace {

const char* const cszColorDefsIniKey = "ColorDefsIni";
const char* const cszColorDefsIniDefault = "ColorDefs.ini";
const char* const cszReferenceSection = "ColorDefs";
const char* const cszOperators = "+-";
const char* const cszTitle = "Color Manager";
const char* const cszColorNotFound = "Die Farbe >>%s<< wurde nicht gefunden";
const char* const cszNestingTooDeep =
    "Die maximale verschachtelungstiefe wurde erreicht.\nAktuelle Farbe: %s";
const char* const cszHslError = "HSL-Convertion Error";

// A longer chain of references is taken for a cycle.
constexpr int maxNestingDepth = 16;

// Sums of user-supplied numbers may leave the int range; they saturate
// instead of overflowing. Every result is clipped to a colour range later.
int saturate(long long value)
{
    return int(std::clamp<long long>(value, INT_MIN, INT_MAX));
}

// floor(x + 0.5), saturated to the int range.
int roundToInt(double x)
{
    const double rounded = std::floor(x + 0.5);
    if (!(rounded > double(INT_MIN)))
        return INT_MIN;
    if (rounded > double(INT_MAX))
        return INT_MAX;
    return int(rounded);
}

std::string trimBlanks(const std::string& text)
{
    return StringFunctions::strip(text, ' ', StringFunctions::Both);
}

// The first three comma-separated parts as integers; missing parts are 0.
void readTriple(const std::string& text, int& r, int& g, int& b)
{
    int parts[3] = {0, 0, 0};
    std::istringstream stream(text);
    cStreamTokenizer tokenizer(stream, ",");
    for (int& part : parts) {
        if (tokenizer.EndOfStream() || tokenizer.StreamError())
            break;
        part = StringFunctions::stringToInt(tokenizer.Token());
        ++tokenizer;
    }
    r = parts[0];
    g = parts[1];
    b = parts[2];
}

} // namespace

bool ColorManager::m_showErrors = false;
std::string ColorManager::m_colorFilePath;

ColorManager::ColorManager() = default;
ColorManager::~ColorManager() = default;

ColorManager* ColorManager::theInstance()
{
    return SingletonSlot<ColorManager>::instance();
}

void ColorManager::resetInstance()
{
    SingletonSlot<ColorManager>::reset();
    m_showErrors = false;
}

void ColorManager::init(const std::string& section, bool showErrors)
{
    m_showErrors = showErrors;
    if (m_colorFile) {
        m_colorFile.reset();
        m_cache.clear();
    }
    m_section = section;
    const std::string fileName = cConfiguration::theInstance()->GetString(
        section.c_str(), cszColorDefsIniKey, cszColorDefsIniDefault);
    m_colorFilePath = cApplicationInfo::theInstance()->getFilenameInAppDir(fileName);
    m_colorFile = std::make_unique<cIniFile>(m_colorFilePath, false, false);
}

std::string ColorManager::readColorFile(const std::string& section, const std::string& key) const
{
    if (!m_colorFile)
        return std::string();
    return m_colorFile->GetString(section.c_str(), key.c_str(), "");
}

unsigned int ColorManager::getColor(const std::string& name, unsigned int defaultColor) const
{
    const auto cached = m_cache.find(name);
    if (cached != m_cache.end())
        return cached->second;

    unsigned int color = defaultColor;
    const std::string value = readColorFile(m_section, name);
    if (value.empty())
        showError(cszColorNotFound, name);
    else
        resolveColor(trimBlanks(value), color);
    m_cache[name] = color;
    return color;
}

bool ColorManager::resolveColor(const std::string& expression, unsigned int& color) const
{
    int lightnessSum = 0;
    int depth = 0;
    unsigned int resolved = 0;
    if (!resolveColor(expression, resolved, lightnessSum, depth))
        return false;
    color = lightnessSum != 0 ? adjustByHSL(resolved, 0, 0, lightnessSum) : resolved;
    return true;
}

bool ColorManager::resolveColor(const std::string& expression, unsigned int& color,
                                int& lightnessSum, int& depth) const
{
    std::string base = expression;
    if (!processOperator(base, lightnessSum))
        return false;

    if (base.find(',') == std::string::npos) {
        if (++depth > maxNestingDepth) {
            showError(cszNestingTooDeep, base);
            return false;
        }
        const std::string value = readColorFile(cszReferenceSection, base);
        if (value.empty()) {
            showError(cszColorNotFound, base);
            return false;
        }
        return resolveColor(value, color, lightnessSum, depth);
    }

    int r = 0;
    int g = 0;
    int b = 0;
    readTriple(base, r, g, b);
    color = rgb2colorRef(r, g, b);
    return true;
}

bool ColorManager::processOperator(std::string& expression, int& value) const
{
    const std::string::size_type pos = expression.find_first_of(cszOperators);
    if (pos == std::string::npos)
        return true;
    if (pos + 1 == expression.size())
        return false;
    const long long amount = StringFunctions::stringToInt(expression.substr(pos + 1));
    value = saturate(expression[pos] == '+' ? value + amount : value - amount);
    expression = trimBlanks(expression.substr(0, pos));
    return true;
}

void ColorManager::setColor(const std::string& name, unsigned int color)
{
    m_cache[name] = color;
}

void ColorManager::clearColorCache()
{
    m_cache.clear();
}

unsigned int ColorManager::rgb2colorRef(int r, int g, int b)
{
    // Unsigned arithmetic: out-of-range parts spill into the next byte
    // instead of being clipped.
    return unsigned(r) + (unsigned(g) << 8) + (unsigned(b) << 16);
}

void ColorManager::colorRef2rgb(unsigned int color, int& r, int& g, int& b)
{
    r = int(color & 0xFF);
    g = int((color >> 8) & 0xFF);
    b = int((color >> 16) & 0xFF);
}

int ColorManager::clip(int value)
{
    return std::clamp(value, 0, 255);
}

void ColorManager::colorRef2hsl(unsigned int color, int& h, int& s, int& l)
{
    int red = 0;
    int green = 0;
    int blue = 0;
    colorRef2rgb(color, red, green, blue);
    const double r = red / 255.0;
    const double g = green / 255.0;
    const double b = blue / 255.0;
    const double max = std::max({r, g, b});
    const double min = std::min({r, g, b});
    const double d = max - min;
    const double lightness = (max + min) / 2.0;

    double hue = 0.0;
    double saturation = 0.0;
    if (d != 0.0) {
        saturation = lightness < 0.5 ? d / (2.0 * lightness) : d / (2.0 - 2.0 * lightness);
        if (r == max) {
            hue = 60.0 * (g - b) / d;
            if (b > g)
                hue += 360.0;
        } else if (g == max) {
            hue = 60.0 * (b - r) / d + 120.0;
        } else if (b == max) {
            hue = 60.0 * (r - g) / d + 240.0;
        } else {
            showError(cszHslError, std::string());
        }
    }
    h = roundToInt(hue);
    s = roundToInt(255.0 * saturation);
    l = roundToInt(255.0 * lightness);
}

unsigned int ColorManager::hsl2colorRef(int h, int s, int l)
{
    if (s == 0)
        return rgb2colorRef(l, l, l);
    const double hue = h / 360.0;
    const double saturation = s / 255.0;
    const double lightness = l / 255.0;
    const double m2 = lightness < 0.5 ? lightness * (1.0 + saturation)
                                      : lightness + saturation - lightness * saturation;
    const double m1 = 2.0 * lightness - m2;
    return rgb2colorRef(getRGBComponent(m1, m2, hue + 1.0 / 3.0),
                        getRGBComponent(m1, m2, hue),
                        getRGBComponent(m1, m2, hue - 1.0 / 3.0));
}

int ColorManager::getRGBComponent(double m1, double m2, double t)
{
    if (t < 0.0)
        t += 1.0;
    if (t > 1.0)
        t -= 1.0;
    double x = m1;
    if (6.0 * t < 1.0)
        x = m1 + (m2 - m1) * 6.0 * t;
    else if (2.0 * t < 1.0)
        x = m2;
    else if (3.0 * t < 2.0)
        x = m1 + (m2 - m1) * (2.0 / 3.0 - t) * 6.0;
    return roundToInt(255.0 * x);
}

void ColorManager::colorRef2yuv(unsigned int color, int& y, int& u, int& v)
{
    int r = 0;
    int g = 0;
    int b = 0;
    colorRef2rgb(color, r, g, b);
    y = clip(roundToInt(0.299 * r + 0.587 * g + 0.114 * b));
    u = b - y;
    v = r - y;
}

unsigned int ColorManager::yuv2colorRef(int y, int u, int v)
{
    const int red = clip(saturate(static_cast<long long>(v) + y));
    const int blue = clip(saturate(static_cast<long long>(u) + y));
    const int green = clip(roundToInt((y - 0.299 * red - 0.114 * blue) / 0.587));
    return rgb2colorRef(red, green, blue);
}

unsigned int ColorManager::adjustByHSL(unsigned int color, int dh, int ds, int dl)
{
    int h = 0;
    int s = 0;
    int l = 0;
    colorRef2hsl(color, h, s, l);
    const long long hue = (static_cast<long long>(h) + dh) % 360;
    h = int(hue < 0 ? hue + 360 : hue);
    s = clip(saturate(static_cast<long long>(s) + ds));
    l = clip(saturate(static_cast<long long>(l) + dl));
    return hsl2colorRef(h, s, l);
}

unsigned int ColorManager::adjustByYUV(unsigned int color, int dy)
{
    int y = 0;
    int u = 0;
    int v = 0;
    colorRef2yuv(color, y, u, v);
    return yuv2colorRef(clip(saturate(static_cast<long long>(y) + dy)), u, v);
}

std::string ColorManager::rgb2htmlColor(int r, int g, int b)
{
    return StringFunctions::formatString("#%02X%02X%02X", unsigned(r), unsigned(g), unsigned(b));
}

std::string ColorManager::colorRef2htmlColor(unsigned int color)
{
    int r = 0;
    int g = 0;
    int b = 0;
    colorRef2rgb(color, r, g, b);
    return rgb2htmlColor(r, g, b);
}

void ColorManager::showError(const char* format, const std::string& arg)
{
    if (!m_showErrors)
        return;
    CrossPlatformApi::messageBox(StringFunctions::formatString(format, arg.c_str()) + "\nFarbdatei: " + m_colorFilePath,
                                 cszTitle, 0);
}
