#include "WildcardPattern.h"

namespace {

char16_t asciiLower(char16_t c)
{
    return c >= u'A' && c <= u'Z' ? char16_t(c + (u'a' - u'A')) : c;
}

// Names and patterns are mostly ASCII, which is folded without a table.
bool sameIgnoringCase(QChar a, QChar b)
{
    if (a == b)
        return true;
    if (a.unicode() < 0x80 && b.unicode() < 0x80)
        return asciiLower(a.unicode()) == asciiLower(b.unicode());
    return a.toCaseFolded() == b.toCaseFolded();
}

bool inRangeIgnoringCase(QChar c, QChar low, QChar high)
{
    for (const QChar form : {c, c.toLower(), c.toUpper()}) {
        if (low <= form && form <= high)
            return true;
    }
    return false;
}

} // namespace

WildcardPattern::WildcardPattern(const QString& pattern)
    : m_pattern(pattern)
{
}

bool WildcardPattern::setHolds(qsizetype at, QChar c, qsizetype* end) const
{
    const qsizetype size = m_pattern.size();
    const bool negated = at < size && m_pattern[at] == QLatin1Char('!');
    if (negated)
        ++at;
    bool held = false;
    // A "]" right at the start is a member, not the end.
    for (qsizetype i = at; i < size; ++i) {
        const QChar member = m_pattern[i];
        if (member == QLatin1Char(']') && i > at) {
            *end = i + 1;
            return held != negated;
        }
        if (i + 2 < size && m_pattern[i + 1] == QLatin1Char('-') && m_pattern[i + 2] != QLatin1Char(']')) {
            held = held || inRangeIgnoringCase(c, member, m_pattern[i + 2]);
            i += 2;
        } else {
            held = held || sameIgnoringCase(c, member);
        }
    }
    *end = -1;
    return false;
}

// Walks name and pattern together; at a mismatch it returns to the last "*"
// and lets it take one character more. Linear in the usual patterns, and at
// worst the product of the two lengths.
bool WildcardPattern::matches(QStringView name) const
{
    const qsizetype patternSize = m_pattern.size();
    qsizetype p = 0;
    qsizetype n = 0;
    qsizetype starAt = -1;
    qsizetype starName = 0;
    while (n < name.size()) {
        if (p < patternSize) {
            const QChar token = m_pattern[p];
            if (token == QLatin1Char('*')) {
                starAt = p++;
                starName = n;
                continue;
            }
            if (token == QLatin1Char('[')) {
                qsizetype end = 0;
                const bool held = setHolds(p + 1, name[n], &end);
                if (end >= 0) {
                    if (held) {
                        p = end;
                        ++n;
                        continue;
                    }
                } else if (sameIgnoringCase(name[n], token)) {
                    ++p;
                    ++n;
                    continue;
                }
            } else if (token == QLatin1Char('?') || sameIgnoringCase(name[n], token)) {
                ++p;
                ++n;
                continue;
            }
        }
        if (starAt < 0)
            return false;
        p = starAt + 1;
        n = ++starName;
    }
    while (p < patternSize && m_pattern[p] == QLatin1Char('*'))
        ++p;
    return p == patternSize;
}
