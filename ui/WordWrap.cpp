#include "WordWrap.h"

#include <QFontMetrics>
#include <QRegularExpression>
#include <QStringList>

namespace {

// Drops the white space that ends a line at a break.
QString withoutTrailingSpace(const QString& line)
{
    int end = line.size();
    while (end > 0 && line.at(end - 1).isSpace())
        --end;
    return line.left(end);
}

} // namespace

QString wordWrap(const QString& text, int width, const QFont& font, bool html)
{
    static const QRegularExpression breakPoint(QStringLiteral("[\\s/\\-_]"));
    const QFontMetrics metrics(font);

    QStringList lines;
    QString line;
    qsizetype start = 0;
    while (start < text.size()) {
        const QRegularExpressionMatch match = breakPoint.match(text, start);
        const qsizetype end = match.hasMatch() ? match.capturedEnd() : text.size();
        // Each piece ends with its break character, so that "/" and "-" stay
        // at the end of a line and a blank can be dropped there.
        const QString piece = text.mid(start, end - start);
        start = end;

        const QString candidate = line + piece;
        if (!line.isEmpty() && metrics.horizontalAdvance(withoutTrailingSpace(candidate)) > width) {
            lines << withoutTrailingSpace(line);
            line = piece.trimmed().isEmpty() && !piece.endsWith(QLatin1Char('\n')) ? QString() : piece;
        } else {
            line = candidate;
        }
        if (line.endsWith(QLatin1Char('\n'))) {
            lines << withoutTrailingSpace(line);
            line.clear();
        }
    }
    if (!line.isEmpty())
        lines << withoutTrailingSpace(line);
    return lines.join(html ? QStringLiteral("<br>") : QStringLiteral("\n"));
}
