#include "FontHelper.h"

#include <QFont>
#include <QFontMetrics>
#include <QString>

namespace {
const char* const referenceFamily = "MS Sans Serif";
constexpr int referencePointSize = 10;
const char* const referenceText = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
// Width of the reference text on the system the layout was designed on.
constexpr float referenceWidth = 405.0f;
constexpr float narrowWidthLimit = 250.0f;
constexpr float narrowWidthScale = 0.74814814f;

float measureReferenceText()
{
    const QFont font(QString::fromLatin1(referenceFamily), referencePointSize);
    return float(QFontMetrics(font).horizontalAdvance(QString::fromLatin1(referenceText)));
}
} // namespace

FontHelper::FontHelper()
    : m_fontScale(scaleForWidth(measureReferenceText()))
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
