#include "FontHelper.h"

#include "FontConfigPreload.h"

#include <QFont>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QString>
#include <QStringList>

namespace {
const char* const referenceFamily = "MS Sans Serif";
constexpr int referencePointSize = 10;
const char* const referenceText = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
// Width of the reference text on the system the layout was designed on.
constexpr float referenceWidth = 405.0f;
constexpr float narrowWidthLimit = 250.0f;
constexpr float narrowWidthScale = 0.74814814f;

constexpr float unscaled = 1.0f;

float measureReferenceText(const QString& family)
{
    const QFont font(family, referencePointSize);
    return float(QFontMetrics(font).horizontalAdvance(QString::fromLatin1(referenceText)));
}
} // namespace

FontHelper::FontHelper()
    : m_fontScale(scaleForFamily(QString::fromLatin1(referenceFamily)))
{
}

float FontHelper::getFontScale() const
{
    return m_fontScale;
}

float FontHelper::scaleForWidth(float width)
{
    return width >= narrowWidthLimit ? width / referenceWidth : narrowWidthScale;
}

float FontHelper::scaleForFamily(const QString& family)
{
    // The first look at the font database: Qt would read the font
    // configuration itself if the preload were still at it.
    FontConfigPreload::waitUntilLoaded();
    // Only an installed family counts, not one the font configuration maps
    // to another font.
    if (!QFontDatabase::families().contains(family, Qt::CaseInsensitive))
        return unscaled;
    return scaleForWidth(measureReferenceText(family));
}
