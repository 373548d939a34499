#pragma once

#include "RefCounted.h"

#include <deque>
#include <string>
#include <vector>

// A user-visible text with parameters. The parameters are filled into the
// text when it is first needed; from then on the text is frozen.
//
// Each parameter replaces the first "%0" of the text, or, when there is none,
// the first "%s"; a parameter without a placeholder is dropped. "%1" and
// higher are never replaced.
class cUserMessage : public cRefCounted
{
public:
    using Parameters = std::vector<std::string>;

    cUserMessage() = default;
    ~cUserMessage() override = default;

    void AddParameter(const char* text);
    void AddParameter(const signed char* text);
    void AddParameter(const unsigned char* text);
    void AddParameter(const std::string& text);
    void AddParameter(char c);
    void AddParameter(signed char c);
    void AddParameter(unsigned char c);
    // Integers are written as int: unsigned values of 2^31 and more come out
    // negative, as the messages of the suite always showed them.
    void AddParameter(int value);
    void AddParameter(long value);
    void AddParameter(short value);
    void AddParameter(unsigned int value);
    void AddParameter(unsigned long value);
    void AddParameter(unsigned short value);
    void AddParameter(float value);
    void AddParameter(double value);
    void AddParameter(long double value);

    // The text with its parameters; computed once, then cached.
    virtual std::string GetMessage() const;
    virtual std::string FormatMessage() const;
    virtual std::string GetUnformatedMessage() const = 0;

    // Fills the parameters [first, last) into text, one after the other.
    static void FormatMessage(std::string& text, Parameters::const_iterator first,
                              Parameters::const_iterator last);

private:
    static void InsertPara(std::string& text, const std::string& parameter);

    Parameters m_parameters;
    mutable std::string m_formatted;
};

template<class T>
cUserMessage& operator<<(cUserMessage& message, const T& parameter)
{
    message.AddParameter(parameter);
    return message;
}

// A message whose text is a fixed string.
class cStringMessage : public cUserMessage
{
public:
    explicit cStringMessage(const std::string& text);

    std::string GetUnformatedMessage() const override;

private:
    std::string m_text;
};

// Several messages, the one pushed last in front. Copies share the messages.
class cUserMessageStack
{
public:
    void Push(cRef<cUserMessage> message);

    // Adds the parameter to the message pushed last (nothing when empty).
    template<class T>
    void AddParameter(const T& parameter)
    {
        if (!m_messages.empty())
            m_messages.front()->AddParameter(parameter);
    }

    // The messages front to back, joined by separator.
    std::string GetMessage(const std::string& separator) const;

    bool Empty() const { return m_messages.empty(); }
    void Clear() { m_messages.clear(); }

private:
    std::deque<cRef<cUserMessage>> m_messages;
};

template<class T>
cUserMessageStack& operator<<(cUserMessageStack& stack, const T& parameter)
{
    stack.AddParameter(parameter);
    return stack;
}
