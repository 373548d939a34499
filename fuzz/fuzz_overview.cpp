// The overview's escaping on arbitrary names and case-file values: whatever
// they hold, the document gets no element but the simple text markup (b, i,
// u, br, p) and no attribute, and every "&" starts an entity.

#include "FuzzSupport.h"
#include "OverviewMarkup.h"
#include "OverviewPage.h"

#include <QRegularExpression>

namespace {

void checkFragment(const QString& html, bool simpleTagsAllowed)
{
    static const QRegularExpression simpleTag(QStringLiteral("\\A</?(b|i|u|p)>|\\A<br>"),
                                              QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression entity(QStringLiteral("\\A&[A-Za-z]+;"));
    for (qsizetype i = 0; i < html.size(); ++i) {
        const QChar c = html.at(i);
        if (c == u'<') {
            const QRegularExpressionMatch tag = simpleTag.match(QStringView(html).mid(i));
            // "<BR>" stands for a line feed in every text.
            FUZZ_CHECK(tag.hasMatch() && (simpleTagsAllowed || tag.captured(0) == QLatin1String("<BR>")));
            i += tag.capturedLength() - 1;
        } else {
            FUZZ_CHECK(c != u'>');
            FUZZ_CHECK(c != u'&' || entity.match(QStringView(html).mid(i)).hasMatch());
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Case-file values are Latin-1, file names arrive as Unicode.
    const QString latin1 = QString::fromLatin1(reinterpret_cast<const char*>(data), qsizetype(size));
    const QString utf8 = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
    for (const QString& text : {latin1, utf8}) {
        checkFragment(OverviewPage::convertToHTML(escapeMarkup(text, Markup::KeepSimpleTags)), true);
        checkFragment(OverviewPage::convertToHTML(escapeMarkup(text, Markup::Escape)), false);
    }
    return 0;
}
