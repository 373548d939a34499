#pragma once

#include "UserMessage.h"

#include <cstdint>
#include <exception>
#include <string>
#include <type_traits>

// Root of the program's own exceptions.
class xNvException : public std::exception
{
public:
    const char* what() const noexcept override;
};

// An exception carrying user messages. Code that catches it on the way up may
// push further messages to say in which context the error happened.
class xNvMessageExc : public xNvException
{
public:
    explicit xNvMessageExc(cRef<cUserMessage> message);

    void Push(cRef<cUserMessage> message);

    // Adds the parameter to the message pushed last.
    template<class T>
    void AddParameter(const T& parameter)
    {
        m_messages.AddParameter(parameter);
    }

    const cUserMessageStack& Messages() const { return m_messages; }

    // The messages one per line, the one pushed last first.
    const char* what() const noexcept override;

private:
    cUserMessageStack m_messages;
    mutable std::string m_what;   // keeps the text returned by what() alive
};

// An error after which the program cannot go on.
class xNvFatalExc : public xNvMessageExc
{
public:
    explicit xNvFatalExc(cRef<cUserMessage> message);
};

// Returns the exception with its own type, so that
// `throw xNvFatalExc(message) << name;` throws an xNvFatalExc.
template<class Exception, class T,
         class = std::enable_if_t<std::is_base_of_v<xNvMessageExc, std::decay_t<Exception>>>>
Exception&& operator<<(Exception&& exception, const T& parameter)
{
    exception.AddParameter(parameter);
    return std::forward<Exception>(exception);
}

// Cancels the user action that is running; the hint tells the catcher how to
// react.
class AbortCurrentWorkflowException : public xNvException
{
public:
    enum AbortHint : std::int32_t {
        PlainAbort = 0
    };

    AbortCurrentWorkflowException(AbortHint hint, const char* text);

    AbortHint abortHint() const { return m_hint; }
    const char* what() const noexcept override;

private:
    AbortHint m_hint;
    std::string m_text;
};
