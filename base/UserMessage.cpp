#include "UserMessage.h"

#include "StringFunctions.h"

#include <sstream>

namespace {

template<class Number>
std::string floatText(Number value)
{
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

} // namespace

void cUserMessage::AddParameter(const char* text)
{
    m_parameters.emplace_back(text);
}

void cUserMessage::AddParameter(const signed char* text)
{
    AddParameter(reinterpret_cast<const char*>(text));
}

void cUserMessage::AddParameter(const unsigned char* text)
{
    AddParameter(reinterpret_cast<const char*>(text));
}

void cUserMessage::AddParameter(const std::string& text)
{
    m_parameters.push_back(text);
}

void cUserMessage::AddParameter(char c)
{
    m_parameters.emplace_back(1, c);
}

void cUserMessage::AddParameter(signed char c)
{
    AddParameter(static_cast<char>(c));
}

void cUserMessage::AddParameter(unsigned char c)
{
    AddParameter(static_cast<char>(c));
}

void cUserMessage::AddParameter(int value)
{
    m_parameters.push_back(StringFunctions::intToString(value));
}

void cUserMessage::AddParameter(long value)
{
    AddParameter(static_cast<int>(value));
}

void cUserMessage::AddParameter(short value)
{
    AddParameter(static_cast<int>(value));
}

void cUserMessage::AddParameter(unsigned int value)
{
    AddParameter(static_cast<int>(value));
}

void cUserMessage::AddParameter(unsigned long value)
{
    AddParameter(static_cast<int>(value));
}

void cUserMessage::AddParameter(unsigned short value)
{
    AddParameter(static_cast<int>(value));
}

void cUserMessage::AddParameter(float value)
{
    m_parameters.push_back(floatText(value));
}

void cUserMessage::AddParameter(double value)
{
    m_parameters.push_back(floatText(value));
}

void cUserMessage::AddParameter(long double value)
{
    m_parameters.push_back(floatText(value));
}

std::string cUserMessage::GetMessage() const
{
    if (m_formatted.empty())
        m_formatted = FormatMessage();
    return m_formatted;
}

std::string cUserMessage::FormatMessage() const
{
    std::string text = GetUnformatedMessage();
    FormatMessage(text, m_parameters.begin(), m_parameters.end());
    return text;
}

void cUserMessage::FormatMessage(std::string& text, Parameters::const_iterator first,
                                 Parameters::const_iterator last)
{
    for (; first != last; ++first)
        InsertPara(text, *first);
}

// Every parameter fills the first "%0", else the first "%s"; with neither it
// is dropped. Since each parameter looks for "%0" again, "%1" and higher are
// never filled, and a parameter text containing "%0" or "%s" is filled by the
// next parameter.
void cUserMessage::InsertPara(std::string& text, const std::string& parameter)
{
    std::string::size_type position = text.find("%0");
    if (position == std::string::npos)
        position = text.find("%s");
    if (position != std::string::npos)
        text.replace(position, 2, parameter);
}

cStringMessage::cStringMessage(const std::string& text)
    : m_text(text)
{
}

std::string cStringMessage::GetUnformatedMessage() const
{
    return m_text;
}

void cUserMessageStack::Push(cRef<cUserMessage> message)
{
    m_messages.push_front(std::move(message));
}

std::string cUserMessageStack::GetMessage(const std::string& separator) const
{
    std::string text;
    for (auto it = m_messages.begin(); it != m_messages.end(); ++it) {
        if (it != m_messages.begin())
            text += separator;
        text += (*it)->GetMessage();
    }
    return text;
}
