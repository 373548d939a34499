#include "StreamTokenizer.h"

cStreamTokenizer::cStreamTokenizer(std::istream& in, const std::string& delimiters)
    : m_in(in)
    , m_delimiters(delimiters)
    , m_streamAtEnd(in.eof())
    , m_streamError(in.rdstate() != std::ios::goodbit)
{
    ++*this;
}

cStreamTokenizer& cStreamTokenizer::operator++()
{
    ReadLineIfNeeded();
    Tok();
    RemoveDelimiter();
    return *this;
}

bool cStreamTokenizer::StreamError()
{
    m_streamAtEnd = m_in.eof();
    m_streamError = m_in.bad() || (m_in.fail() && !m_in.eof());
    return m_streamError;
}

void cStreamTokenizer::ReadLineIfNeeded()
{
    if (!m_lineUsedUp)
        return;
    if (m_streamError || m_streamAtEnd || !std::getline(m_in, m_line)) {
        m_endOfTokens = true;
        StreamError();
        return;
    }
    ++m_lineNumber;
    m_position = 0;
    m_lineUsedUp = false;
    m_streamAtEnd = m_in.eof();
}

void cStreamTokenizer::Tok()
{
    if (m_lineUsedUp) {
        m_token.clear();
        return;
    }
    std::string::size_type end = m_line.find_first_of(m_delimiters, m_position);
    if (end == std::string::npos)
        end = m_line.size();
    m_token = m_line.substr(m_position, end - m_position);
    m_position = unsigned(end);
    if (m_position == m_line.size())
        m_lineUsedUp = true;
}

void cStreamTokenizer::RemoveDelimiter()
{
    if (m_position < m_line.size() && m_delimiters.find(m_line[m_position]) != std::string::npos) {
        m_delimiter = m_line[m_position++];
        // A delimiter at the line end closes the line's last token.
        if (m_position == m_line.size())
            m_lineUsedUp = true;
    } else {
        m_delimiter = NO_DELIMITER;
    }
}
