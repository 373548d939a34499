#include "StreamTokenizer.h"
#include "StringFunctions.h"
#include "TestMain.h"

#include <QTest>

#include <cstdlib>
#include <sstream>
#include <vector>

using SF = StringFunctions;

namespace {

std::vector<std::string> tokens(const std::string& text, const std::string& delimiters)
{
    std::istringstream in(text);
    std::vector<std::string> result;
    for (cStreamTokenizer tok(in, delimiters); !tok.EndOfStream() && !tok.StreamError(); ++tok)
        result.push_back(tok.Token());
    return result;
}

} // namespace

class StringFunctionsTests : public QObject
{
    Q_OBJECT

private slots:
    void stripAndShape()
    {
        QCOMPARE(SF::strip("  a b  ", ' ', SF::Leading), std::string("a b  "));
        QCOMPARE(SF::strip("  a b  ", ' ', SF::Trailing), std::string("  a b"));
        QCOMPARE(SF::strip("xxaxx", 'x', SF::Both), std::string("a"));
        QCOMPARE(SF::strip("\ta ", ' ', SF::Both), std::string("\ta"));
        for (SF::StripType type : {SF::Leading, SF::Trailing, SF::Both})
            QCOMPARE(SF::strip("xxx", 'x', type), std::string());
        QCOMPARE(SF::expand("abc", 2, 'x'), std::string("ab"));
        QCOMPARE(SF::leftOf("key", '='), std::string("key"));
        std::string text = "Gr\xD6\xDF" "e Abc";
        SF::toUpper(text);
        QCOMPARE(text, std::string("GR\xD6\xDF" "E ABC"));   // Latin-1 bytes stay
        QCOMPARE(SF::rot13("Hallo, Welt-Zz!"), std::string("Unyyb, Jryg-Mm!"));
    }

    void numbers()
    {
        QCOMPARE(SF::intToString(-2147483647 - 1), std::string("-2147483648"));
        QCOMPARE(SF::stringToInt("12abc"), 12);
        QCOMPARE(SF::stringToInt("abc"), 0);
        QCOMPARE(SF::hexToDec("1G"), 16);
        QCOMPARE(SF::hexToDec("7FFFFFFF"), 2147483647);
        QCOMPARE(SF::toHex(std::string("\x00\x1F\xAB", 3)), std::string("001FAB"));
    }

    void searchAndCompare()
    {
        QCOMPARE(SF::findNoCase("abcABC", "bC", 2), 4);
        QCOMPARE(SF::findNoCase("abc", "x", 0), -1);
        QCOMPARE(SF::findNoCase("abc", "c", 7), -1);
        QCOMPARE(SF::countOccurrences("aAaa", "aa", 0), 2);
        QCOMPARE(SF::countOccurrences("xAbxab", "AB", 3), 1);
        QVERIFY(SF::equalsNoCase(std::string("Normal"), std::string("nORMAL")));
        QVERIFY(SF::compareNoCase("abc", "ABD") < 0);
        QVERIFY(SF::compare("abcd", "abce", 3) == 0);
    }

    void replaceAndSplit()
    {
        std::string text = "a.b.c";
        QVERIFY(SF::replace(text, ".", "::"));
        QCOMPARE(text, std::string("a::b.c"));
        text = "aXa";
        QVERIFY(SF::replaceAll(text, "a", "aa"));   // inserted texts are not searched again
        QCOMPARE(text, std::string("aaXaa"));
        QVERIFY(!SF::replaceAll(text, "a", "a"));
        QVERIFY(!SF::replaceAll(text, "q", "r"));
        QCOMPARE(text, std::string("aaXaa"));
        text = "a/b\\c:d";
        SF::replaceAllOf(text, "/\\:", '_');
        QCOMPARE(text, std::string("a_b_c_d"));

        std::string left = "L", right = "R";
        QVERIFY(!SF::split("novalue", "=", left, right));
        QCOMPARE(left + right, std::string("LR"));
        QVERIFY(SF::split("k==v", "==", left, right));
        QCOMPARE(left + "|" + right, std::string("k|v"));

        text = "vor[[MITTE]]nach";
        QCOMPARE(SF::extract(text, "[[", "]]"), std::string("MITTE"));
        QCOMPARE(text, std::string("vornach"));
        QCOMPARE(SF::extract(text, "<", ">"), std::string());
        QCOMPARE(text, std::string("vornach"));
    }

    void xmlElements()
    {
        const std::string text = "<a><Name lang=\"de\">Wert</NAME><b>x</b></a>";
        QCOMPARE(SF::getXmlElement(text, "name"), std::string("Wert"));
        QCOMPARE(SF::getXmlElement(text, "c"), std::string());
        QCOMPARE(SF::getXmlElement("<open>no end", "open"), std::string());

        std::string edited = text;
        QVERIFY(SF::replaceXmlElement(edited, "b", "neu"));
        QCOMPARE(edited, std::string("<a><Name lang=\"de\">Wert</NAME><b>neu</b></a>"));
        QCOMPARE(SF::extractXmlElement(edited, "Name"), std::string("Wert"));
        QCOMPARE(edited, std::string("<a><b>neu</b></a>"));
    }

    void environmentAndFormat()
    {
        qputenv("SC_TEST_VAR", "wert");
        qunsetenv("SC_TEST_UNSET");
        std::string text = "x%SC_TEST_VAR%y%SC_TEST_VAR%";
        QVERIFY(SF::replaceEnvironmenVariable(text));
        QCOMPARE(text, std::string("xwerty%SC_TEST_VAR%"));
        text = "%SC_TEST_UNSET%%SC_TEST_VAR%";
        QVERIFY(!SF::replaceEnvironmenVariable(text));
        QCOMPARE(text, std::string("%SC_TEST_UNSET%%SC_TEST_VAR%"));
        for (std::string untouched : {"50%", "%%x", "none"})
            QVERIFY(!SF::replaceEnvironmenVariable(untouched));

        QCOMPARE(SF::formatString("%s-%03d", "a", 7), std::string("a-007"));
        QCOMPARE(SF::formatString("%s", std::string(20000, 'x').c_str()).size(), size_t(16383));
    }

    void tokenizer()
    {
        using List = std::vector<std::string>;
        QCOMPARE(tokens("a,b,,c", ","), (List{"a", "b", "", "c"}));
        QCOMPARE(tokens("a,b,,c\n", ","), (List{"a", "b", "", "c"}));
        QCOMPARE(tokens("normal,vorweg,", ","), (List{"normal", "vorweg"}));
        QCOMPARE(tokens("1,2\n3;4\n\n5", ",;"), (List{"1", "2", "3", "4", "", "5"}));
        QCOMPARE(tokens("", ","), List{});

        std::istringstream in("x;y");
        cStreamTokenizer tok(in, ",;");
        QCOMPARE(tok.Delimiter(), ';');
        ++tok;
        QCOMPARE(tok.Token(), std::string("y"));
        QCOMPARE(tok.Delimiter(), cStreamTokenizer::NO_DELIMITER);
        QCOMPARE(tok.LineNumber(), 1);
    }
};

SC_TEST(StringFunctionsTests)
#include "tst_strings.moc"
