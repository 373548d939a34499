#include "DMFileName.h"

#include "CrossPlatformApi.h"

#include <algorithm>
#include <map>
#include <optional>
#include <vector>

#include <unistd.h>

namespace {

constexpr int maxSymbolNesting = 16;
// Far beyond any real path; stops symbols that refer to others many times
// over from building texts that never end.
constexpr std::size_t maxExpandedLength = 32 * 1024;

std::string withSlashes(std::string path)
{
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

std::string normalize(const std::string& text)
{
    const std::string path = withSlashes(text);
    if (path.empty())
        return path;
    const bool absolute = path.front() == '/';
    const bool trailingSlash = path.back() == '/';

    std::vector<std::string> parts;
    std::size_t start = 0;
    while (start <= path.size()) {
        std::size_t end = path.find('/', start);
        if (end == std::string::npos)
            end = path.size();
        const std::string part = path.substr(start, end - start);
        if (part == "..") {
            if (!parts.empty() && parts.back() != "..")
                parts.pop_back();
            else if (!absolute)
                parts.push_back(part);
        } else if (!part.empty() && part != ".") {
            parts.push_back(part);
        }
        start = end + 1;
    }

    std::string result = absolute ? "/" : "";
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i > 0)
            result += '/';
        result += parts[i];
    }
    if (parts.empty())
        return absolute ? result : std::string(".");
    if (trailingSlash)
        result += '/';
    return result;
}

// A path that needs no base folder: absolute, or starting with an
// environment variable that the caller expands later.
bool isAnchored(const std::string& path)
{
    return !path.empty() && (path.front() == '/' || path.front() == '%');
}

bool startsWithSymbol(const std::string& path)
{
    return !path.empty() && path.front() == '<' && path.find('>') != std::string::npos;
}

// Expands the symbols of one path. Each symbol's expansion is kept, so a
// symbol that many values refer to is expanded once.
class SymbolExpander
{
public:
    explicit SymbolExpander(const DMFileEnvironment& environment) : m_environment(environment) {}

    std::optional<std::string> expand(const std::string& path)
    {
        const std::optional<Expansion> expansion = expandText(path, 0);
        return expansion ? std::optional<std::string>(expansion->text) : std::nullopt;
    }

private:
    struct Expansion
    {
        std::string text;
        int depth = 0;   // how deeply the symbols inside the text nest
    };

    // `level` is the number of symbol expansions that enclose `text`.
    std::optional<Expansion> expandText(const std::string& text, int level)
    {
        Expansion result;
        std::size_t position = 0;
        while (position < text.size()) {
            const std::size_t open = text.find('<', position);
            const std::size_t close = open == std::string::npos ? open : text.find('>', open + 1);
            if (close == std::string::npos) {
                result.text.append(text, position, std::string::npos);
                break;
            }
            result.text.append(text, position, open - position);
            const std::optional<Expansion> symbol =
                expandSymbol(text.substr(open + 1, close - open - 1), level);
            if (!symbol)
                return std::nullopt;
            result.text += symbol->text;
            result.depth = std::max(result.depth, symbol->depth);
            if (result.text.size() > maxExpandedLength)
                return std::nullopt;
            position = close + 1;
        }
        return result;
    }

    std::optional<Expansion> expandSymbol(const std::string& name, int level)
    {
        if (level >= maxSymbolNesting || !m_environment.hasSymbol(name))
            return std::nullopt;
        auto known = m_expanded.find(name);
        if (known == m_expanded.end()) {
            std::optional<Expansion> value = expandText(m_environment.getSymbol(name), level + 1);
            if (!value)
                return std::nullopt;
            ++value->depth;
            known = m_expanded.emplace(name, std::move(*value)).first;
        }
        if (level + known->second.depth > maxSymbolNesting)
            return std::nullopt;
        return known->second;
    }

    const DMFileEnvironment& m_environment;
    std::map<std::string, Expansion> m_expanded;
};

} // namespace

void DMFileEnvironment::setSymbol(const std::string& name, const std::string& value)
{
    m_symbols[name] = value;
}

std::string DMFileEnvironment::getSymbol(const std::string& name) const
{
    const auto found = m_symbols.find(name);
    return found == m_symbols.end() ? std::string() : found->second;
}

bool DMFileEnvironment::hasSymbol(const std::string& name) const
{
    return m_symbols.count(name) != 0;
}

void DMFileEnvironment::setBaseDir(const std::string& folder)
{
    m_baseDir = withSlashes(folder);
}

std::string DMFileEnvironment::getBaseDir() const
{
    return m_baseDir;
}

DMFileName::DMFileName(const std::string& path) : m_path(withSlashes(path)) {}

DMFileEnvironment& DMFileName::getGlobalFileEnvironment()
{
    static DMFileEnvironment environment;
    return environment;
}

void DMFileName::resetGlobalFileEnvironment()
{
    getGlobalFileEnvironment() = DMFileEnvironment();
}

void DMFileName::setFullPath(const std::string& path)
{
    m_path = withSlashes(path);
}

std::string DMFileName::compose() const
{
    const DMFileEnvironment& environment = getGlobalFileEnvironment();
    const std::optional<std::string> expanded = SymbolExpander(environment).expand(m_path);
    if (!expanded || expanded->empty())
        return std::string();
    const std::string baseDir = environment.getBaseDir();
    if (isAnchored(*expanded) || baseDir.empty())
        return normalize(*expanded);
    return normalize(baseDir + '/' + *expanded);
}

bool DMFileName::makeAbsPath(bool expandSymbols)
{
    if (expandSymbols) {
        m_path = compose();
    } else if (!m_path.empty() && !startsWithSymbol(m_path)) {
        const std::string baseDir = getGlobalFileEnvironment().getBaseDir();
        m_path = normalize(isAnchored(m_path) || baseDir.empty() ? m_path : baseDir + '/' + m_path);
    }
    return !m_path.empty();
}

bool DMFileName::makeRelPath(const std::string& symbol)
{
    const std::string symbolic = '<' + symbol + '>';
    std::string folder = DMFileName(symbolic).compose();
    const std::string absolute = compose();
    if (absolute.empty())
        return false;
    // A symbol whose value is no absolute folder (undefined, or left to an
    // environment variable) cannot carry the path.
    const bool symbolIsFolder = !folder.empty() && folder.front() == '/';
    while (!folder.empty() && folder.back() == '/')
        folder.pop_back();   // the root folder becomes "", which every absolute path continues

    const bool inFolder = absolute.compare(0, folder.size(), folder) == 0
                       && (absolute.size() == folder.size() || absolute[folder.size()] == '/');
    if (symbolIsFolder && inFolder) {
        m_path = symbolic + absolute.substr(folder.size());
        return true;
    }
    m_path = absolute;
    return false;
}

std::string DMFileName::asParmeterisedString() const
{
    return m_path;
}

std::string DMFileName::normalizedString() const
{
    return normalize(m_path);
}

bool DMFileName::exists() const
{
    std::string path = compose();
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return !path.empty() && access(CrossPlatformApi::fileSystemEncoding(path).c_str(), F_OK) == 0;
}
