#pragma once

#include <istream>
#include <string>

// Splits the lines of a stream into tokens at a set of delimiter characters.
// Two adjacent delimiters give an empty token; a delimiter at the end of a
// line ends the last token of that line (it does not start an empty one).
//
//   for (cStreamTokenizer tok(in, ","); !tok.EndOfStream() && !tok.StreamError(); ++tok)
//       use(tok.Token());
class cStreamTokenizer
{
public:
    static constexpr char NO_DELIMITER = 0;

    // Reads the first token.
    cStreamTokenizer(std::istream& in, const std::string& delimiters);
    virtual ~cStreamTokenizer() = default;

    cStreamTokenizer(const cStreamTokenizer&) = delete;
    cStreamTokenizer& operator=(const cStreamTokenizer&) = delete;

    cStreamTokenizer& operator++();

    const std::string& Token() const { return m_token; }
    // The delimiter that ended the current token, or NO_DELIMITER.
    char Delimiter() const { return m_delimiter; }
    int LineNumber() const { return m_lineNumber; }   // lines read so far

    // True once the input holds no further token; the current token is then
    // not part of the input.
    bool EndOfStream() const { return m_endOfTokens; }
    // Whether the stream failed for another reason than reaching its end.
    bool StreamError();

private:
    void ReadLineIfNeeded();
    void Tok();
    void RemoveDelimiter();

    std::istream& m_in;
    std::string m_delimiters;
    std::string m_line;
    unsigned m_position = 0;
    int m_lineNumber = 0;
    std::string m_token;
    char m_delimiter = NO_DELIMITER;
    bool m_lineUsedUp = true;
    bool m_streamAtEnd = false;
    bool m_streamError = false;
    bool m_endOfTokens = false;
};
