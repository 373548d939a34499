#include "StringFunctions.h"

#include "CrossPlatformApi.h"
#include "ValidatedBuffer.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

// Case folding of plain ASCII letters, independent of the C locale that the
// application may have set.
char asciiUpper(char c)
{
    return (c >= 'a' && c <= 'z') ? char(c - 'a' + 'A') : c;
}

char asciiLower(char c)
{
    return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c;
}

} // namespace

std::string StringFunctions::strip(const std::string& text, char c, StripType type)
{
    if (text.empty())
        return text;
    std::string::size_type first = 0;
    if (type != Trailing) {
        first = findFirstDifferent(text, c);
        if (first == std::string::npos)
            return std::string();
    }
    std::string::size_type last = text.size() - 1;
    if (type != Leading) {
        last = findLastDifferent(text, c);
        if (last == std::string::npos)
            return std::string();
    }
    return text.substr(first, last - first + 1);
}

std::string::size_type StringFunctions::findFirstDifferent(const std::string& text, char c)
{
    return text.find_first_not_of(c);
}

std::string::size_type StringFunctions::findLastDifferent(const std::string& text, char c,
                                                          std::string::size_type from)
{
    return text.find_last_not_of(c, from);
}

void StringFunctions::toLower(std::string& text)
{
    std::transform(text.begin(), text.end(), text.begin(), asciiLower);
}

void StringFunctions::toUpper(std::string& text)
{
    std::transform(text.begin(), text.end(), text.begin(), asciiUpper);
}

void StringFunctions::reverse(std::string& text)
{
    std::reverse(text.begin(), text.end());
}

std::string StringFunctions::expand(const std::string& text, std::string::size_type n, char c)
{
    std::string result = text;
    result.resize(n, c);
    return result;
}

std::string StringFunctions::leftOf(const std::string& text, char c)
{
    return text.substr(0, text.find(c));
}

std::string StringFunctions::rot13(const std::string& text)
{
    std::string result = text;
    for (char& c : result) {
        if ((c >= 'A' && c <= 'M') || (c >= 'a' && c <= 'm'))
            c = char(c + 13);
        else if ((c >= 'N' && c <= 'Z') || (c >= 'n' && c <= 'z'))
            c = char(c - 13);
    }
    return result;
}

std::string StringFunctions::intToString(int value)
{
    return std::to_string(value);
}

int StringFunctions::stringToInt(const std::string& text)
{
    return std::atoi(text.c_str());
}

int StringFunctions::xToD(char digit)
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'A' && digit <= 'F')
        return digit - 'A' + 10;
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    return 0;
}

int StringFunctions::hexToDec(const std::string& text)
{
    // Unsigned arithmetic: long texts wrap around instead of overflowing.
    unsigned int value = 0;
    for (char c : text)
        value = value * 16 + unsigned(xToD(c));
    return int(value);
}

std::string StringFunctions::toHex(const std::string& bytes)
{
    static const char hexArray[] = "0123456789ABCDEF";
    std::string result;
    result.reserve(bytes.size() * 2);
    for (unsigned char byte : bytes) {
        result += hexArray[byte >> 4];
        result += hexArray[byte & 0x0F];
    }
    return result;
}

int StringFunctions::compare(const std::string& a, const std::string& b, std::size_t n)
{
    return std::strncmp(a.c_str(), b.c_str(), n);
}

int StringFunctions::compareNoCase(const char* a, const char* b)
{
    return CrossPlatformApi::strCmpNoCase(a, b);
}

int StringFunctions::compareNoCase(const std::string& a, const std::string& b)
{
    return CrossPlatformApi::strCmpNoCase(a.c_str(), b.c_str());
}

bool StringFunctions::equalsNoCase(const char* a, const char* b)
{
    return compareNoCase(a, b) == 0;
}

bool StringFunctions::equalsNoCase(const std::string& a, const std::string& b)
{
    return compareNoCase(a, b) == 0;
}

bool StringFunctions::nocase_compare(char a, char b)
{
    return asciiUpper(a) == asciiUpper(b);
}

int StringFunctions::findNoCase(const std::string& text, const std::string& what,
                                std::string::size_type from)
{
    if (from > text.size())
        return -1;
    const auto found = std::search(text.begin() + std::string::difference_type(from), text.end(),
                                   what.begin(), what.end(), nocase_compare);
    if (found == text.end() && !what.empty())
        return -1;
    return int(found - text.begin());
}

bool StringFunctions::containsNoCase(const std::string& text, const std::string& what)
{
    return findNoCase(text, what, 0) != -1;
}

int StringFunctions::countOccurrences(const std::string& text, const std::string& what,
                                      std::string::size_type from)
{
    if (what.empty())
        return 0;
    int count = 0;
    for (int position = findNoCase(text, what, from); position != -1;
         position = findNoCase(text, what, std::string::size_type(position) + what.size()))
        ++count;
    return count;
}

bool StringFunctions::replace(std::string& text, const std::string& what, const std::string& with)
{
    const std::string::size_type position = text.find(what);
    if (position == std::string::npos)
        return false;
    text.replace(position, what.size(), with);
    return true;
}

bool StringFunctions::replaceAll(std::string& text, const std::string& what,
                                 const std::string& with)
{
    if (what == with || what.empty())
        return false;
    bool replaced = false;
    for (std::string::size_type position = text.find(what); position != std::string::npos;
         position = text.find(what, position + with.size())) {
        text.replace(position, what.size(), with);
        replaced = true;
    }
    return replaced;
}

void StringFunctions::replaceAllOf(std::string& text, const std::string& chars, char c)
{
    for (std::string::size_type position = text.find_first_of(chars);
         position != std::string::npos; position = text.find_first_of(chars, position + 1))
        text[position] = c;
}

bool StringFunctions::split(const std::string& text, const std::string& separator,
                            std::string& left, std::string& right)
{
    const std::string::size_type position = text.find(separator);
    if (position == std::string::npos)
        return false;
    // Through copies: left or right may be text itself.
    std::string before = text.substr(0, position);
    std::string after = text.substr(position + separator.size());
    left = std::move(before);
    right = std::move(after);
    return true;
}

std::string StringFunctions::extract(std::string& text, const std::string& start,
                                     const std::string& end)
{
    int startPosition = 0;
    if (!start.empty()) {
        startPosition = findNoCase(text, start, 0);
        if (startPosition == -1)
            return std::string();
    }
    const std::string::size_type innerStart = std::string::size_type(startPosition) + start.size();
    const int endPosition = findNoCase(text, end, std::string::size_type(startPosition));
    if (endPosition == -1 || std::string::size_type(endPosition) < innerStart)
        return std::string();
    std::string inner = text.substr(innerStart, std::string::size_type(endPosition) - innerStart);
    text.erase(std::string::size_type(startPosition),
               std::string::size_type(endPosition - startPosition) + end.size());
    return inner;
}

std::string StringFunctions::formatString(const char* format, ...)
{
    ValidatedBuffer buffer(16384);
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(buffer.get(), buffer.getSize(), format, arguments);
    va_end(arguments);
    return length < 0 ? std::string() : std::string(buffer.getConst());
}

bool StringFunctions::replaceEnvironmenVariable(std::string& text)
{
    const std::string::size_type open = text.find('%');
    if (open == std::string::npos)
        return false;
    const std::string::size_type close = text.find('%', open + 1);
    if (close == std::string::npos || close == open + 1)
        return false;
    const char* value = std::getenv(text.substr(open + 1, close - open - 1).c_str());
    if (!value)
        return false;
    text.replace(open, close - open + 1, value);
    return true;
}

bool StringFunctions::getXmlElementLocation(const std::string& text, const std::string& tag,
                                            std::string::size_type& outerStart,
                                            std::string::size_type& outerEnd,
                                            std::string::size_type& innerStart,
                                            std::string::size_type& innerEnd)
{
    if (text.empty() || tag.empty())
        return false;
    const int open = findNoCase(text, "<" + tag, 0);
    if (open == -1)
        return false;
    const int openEnd = findNoCase(text, ">", std::string::size_type(open) + 1 + tag.size());
    if (openEnd == -1)
        return false;
    const std::string closingTag = "</" + tag + ">";
    const int close = findNoCase(text, closingTag, std::string::size_type(openEnd) + 1);
    if (close == -1)
        return false;
    outerStart = std::string::size_type(open);
    innerStart = std::string::size_type(openEnd) + 1;
    innerEnd = std::string::size_type(close);
    outerEnd = innerEnd + closingTag.size();
    return true;
}

std::string StringFunctions::getXmlElement(const std::string& text, const std::string& tag)
{
    std::string::size_type outerStart, outerEnd, innerStart, innerEnd;
    if (!getXmlElementLocation(text, tag, outerStart, outerEnd, innerStart, innerEnd))
        return std::string();
    return text.substr(innerStart, innerEnd - innerStart);
}

std::string StringFunctions::extractXmlElement(std::string& text, const std::string& tag)
{
    std::string::size_type outerStart, outerEnd, innerStart, innerEnd;
    if (!getXmlElementLocation(text, tag, outerStart, outerEnd, innerStart, innerEnd))
        return std::string();
    std::string inner = text.substr(innerStart, innerEnd - innerStart);
    text.erase(outerStart, outerEnd - outerStart);
    return inner;
}

bool StringFunctions::replaceXmlElement(std::string& text, const std::string& tag,
                                        const std::string& inner)
{
    std::string::size_type outerStart, outerEnd, innerStart, innerEnd;
    if (!getXmlElementLocation(text, tag, outerStart, outerEnd, innerStart, innerEnd))
        return false;
    text.replace(innerStart, innerEnd - innerStart, inner);
    return true;
}
