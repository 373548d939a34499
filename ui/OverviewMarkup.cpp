#include "OverviewMarkup.h"

#include <algorithm>
#include <iterator>

QString escapeMarkup(const QString& text, Markup markup)
{
    static const QLatin1String simpleTags[] = {
        QLatin1String("<b>"), QLatin1String("</b>"), QLatin1String("<i>"),
        QLatin1String("</i>"), QLatin1String("<u>"), QLatin1String("</u>"),
        QLatin1String("<br>"), QLatin1String("<p>"), QLatin1String("</p>"),
    };
    QString result;
    result.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == u'<') {
            if (markup == Markup::KeepSimpleTags) {
                const QStringView rest = QStringView(text).mid(i);
                const auto tag = std::find_if(std::begin(simpleTags), std::end(simpleTags),
                                              [&](QLatin1String tag) {
                                                  return rest.startsWith(tag, Qt::CaseInsensitive);
                                              });
                if (tag != std::end(simpleTags)) {
                    result += rest.left(tag->size());
                    i += tag->size() - 1;
                    continue;
                }
            }
            result += QLatin1String("&lt;");
        } else if (c == u'>') {
            result += QLatin1String("&gt;");
        } else if (c == u'&') {
            result += QLatin1String("&amp;");
        } else {
            result += c;
        }
    }
    return result;
}
