#pragma once

#include <cstddef>
#include <string>

// Helpers on byte strings (Latin-1). Case-insensitive operations fold plain
// ASCII letters only.
class StringFunctions
{
public:
    enum StripType {
        Leading = 0,
        Trailing = 1,
        Both = 2
    };

    // --- Trimming and shaping ------------------------------------------------
    // Removes the character c (only that one) from the front, the back or both.
    static std::string strip(const std::string& text, char c = ' ', StripType type = Both);
    // Position of the first character other than c, or npos.
    static std::string::size_type findFirstDifferent(const std::string& text, char c);
    // Position of the last character other than c at or before from, or npos.
    static std::string::size_type findLastDifferent(const std::string& text, char c,
                                                     std::string::size_type from = std::string::npos);
    static void toLower(std::string& text);
    static void toUpper(std::string& text);
    static void reverse(std::string& text);
    // Cuts the text to n characters or pads it with c at the end.
    static std::string expand(const std::string& text, std::string::size_type n, char c = ' ');
    // The text before the first c; all of it when there is no c.
    static std::string leftOf(const std::string& text, char c);
    // Letters A-M/a-m move 13 places forward, N-Z/n-z 13 back; other bytes stay.
    static std::string rot13(const std::string& text);

    // --- Numbers -------------------------------------------------------------
    static std::string intToString(int value);
    static int stringToInt(const std::string& text);   // atoi: non-numeric gives 0
    static int xToD(char digit);                        // hex digit value; other characters 0
    static int hexToDec(const std::string& text);       // no prefix, no check
    static std::string toHex(const std::string& bytes); // two upper-case digits per byte

    // --- Comparison and search -----------------------------------------------
    static int compare(const std::string& a, const std::string& b, std::size_t n);
    static int compareNoCase(const char* a, const char* b);
    static int compareNoCase(const std::string& a, const std::string& b);
    static bool equalsNoCase(const char* a, const char* b);
    static bool equalsNoCase(const std::string& a, const std::string& b);
    static bool nocase_compare(char a, char b);
    // Position of the first case-insensitive occurrence at or after from, or -1.
    static int findNoCase(const std::string& text, const std::string& what,
                          std::string::size_type from = 0);
    static bool containsNoCase(const std::string& text, const std::string& what);
    // Case-insensitive, non-overlapping occurrences from from on.
    static int countOccurrences(const std::string& text, const std::string& what,
                                std::string::size_type from = 0);

    // --- Replacing and splitting ---------------------------------------------
    // Replaces the first (case-sensitive) occurrence; whether there was one.
    static bool replace(std::string& text, const std::string& what, const std::string& with);
    // Replaces every occurrence, never inside an inserted text. False at once
    // when what equals with; otherwise whether anything was replaced.
    static bool replaceAll(std::string& text, const std::string& what, const std::string& with);
    // Every character of text that is one of chars becomes c.
    static void replaceAllOf(std::string& text, const std::string& chars, char c);
    // Splits at the first separator; false (outputs untouched) when there is none.
    static bool split(const std::string& text, const std::string& separator, std::string& left,
                      std::string& right);
    // Cuts the stretch from start through end (both found case-insensitively)
    // out of text and returns what lay between them; empty when not found.
    static std::string extract(std::string& text, const std::string& start, const std::string& end);
    // printf-style formatting; results are cut to 16383 characters.
    static std::string formatString(const char* format, ...)
        __attribute__((format(printf, 1, 2)));
    // Replaces the first %NAME% pair by the value of the environment variable
    // NAME. False when there is no such pair or NAME is not set; callers loop
    // until it returns false.
    static bool replaceEnvironmenVariable(std::string& text);

    // --- Elements of XML-like text -------------------------------------------
    // Locates the first element tag (case-insensitive; a longer tag name that
    // begins with tag matches too; no nesting). Outer spans "<tag ...>" through
    // "</tag>", inner the text between them.
    static bool getXmlElementLocation(const std::string& text, const std::string& tag,
                                      std::string::size_type& outerStart,
                                      std::string::size_type& outerEnd,
                                      std::string::size_type& innerStart,
                                      std::string::size_type& innerEnd);
    static std::string getXmlElement(const std::string& text, const std::string& tag);
    // Returns the inner text and removes the whole element from text.
    static std::string extractXmlElement(std::string& text, const std::string& tag);
    static bool replaceXmlElement(std::string& text, const std::string& tag,
                                  const std::string& inner);
};
