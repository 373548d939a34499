#include "Exceptions.h"

const char* xNvException::what() const noexcept
{
    return "";
}

xNvMessageExc::xNvMessageExc(cRef<cUserMessage> message)
{
    Push(std::move(message));
}

void xNvMessageExc::Push(cRef<cUserMessage> message)
{
    m_messages.Push(std::move(message));
}

const char* xNvMessageExc::what() const noexcept
{
    try {
        m_what = m_messages.GetMessage("\n");
    } catch (...) {
        m_what.clear();
    }
    return m_what.c_str();
}

xNvFatalExc::xNvFatalExc(cRef<cUserMessage> message)
    : xNvMessageExc(std::move(message))
{
}

AbortCurrentWorkflowException::AbortCurrentWorkflowException(AbortHint hint, const char* text)
    : m_hint(hint)
    , m_text(text ? text : "")
{
}

const char* AbortCurrentWorkflowException::what() const noexcept
{
    return m_text.c_str();
}
