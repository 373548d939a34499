// The line tokenizer on arbitrary text with arbitrary delimiters (the first
// two bytes of the input): it ends, its tokens hold no delimiter and no line
// feed, and together they are never longer than the input.

#include "FuzzSupport.h"
#include "StreamTokenizer.h"

#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::string delimiters = input.substr(0, std::min<std::size_t>(2, input.size()));
    std::istringstream stream(input.substr(delimiters.size()));

    std::size_t tokens = 0;
    std::size_t characters = 0;
    for (cStreamTokenizer tok(stream, delimiters); !tok.EndOfStream() && !tok.StreamError(); ++tok) {
        // Every token but the empty ones between two delimiters uses up input.
        FUZZ_CHECK(++tokens <= 2 * size + 2);
        characters += tok.Token().size();
        FUZZ_CHECK(tok.Token().find('\n') == std::string::npos);
        if (!delimiters.empty())
            FUZZ_CHECK(tok.Token().find_first_of(delimiters) == std::string::npos);
        FUZZ_CHECK(tok.Delimiter() == cStreamTokenizer::NO_DELIMITER
                   || delimiters.find(tok.Delimiter()) != std::string::npos);
    }
    FUZZ_CHECK(characters <= size);
    return 0;
}
