#include "support/functionName.h"

#include <cctype>
#include <cstddef>

namespace ORBI_LUMO25D
{

namespace
{

/// One pass from left to right. `name` is the candidate: it starts anew at every blank, star or ampersand
/// outside brackets, so that what is left when the parameter list opens is the declared name and not the
/// return type.
class SignatureScanner
{
public:
    explicit SignatureScanner(const std::string& signature) : text(signature) {}

    std::string run()
    {
        while (pos < text.size()) {
            if (atOperator()) {
                takeOperator();
            } else if (text[pos] == '(') {
                if (takeParenthesis()) return name;
            } else {
                takeCharacter();
            }
        }
        return text; // no parameter list found
    }

private:
    bool startsWith(const char* pPrefix) const
    {
        const std::string prefix(pPrefix);
        return text.compare(pos, prefix.size(), prefix) == 0;
    }
    bool nameEndsWith(const char* pSuffix) const
    {
        const std::string suffix(pSuffix);
        return name.size() >= suffix.size() && name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0;
    }

    /// The position behind the bracket that closes the one at `from`; the end of the text if there is none.
    std::size_t behindBracket(std::size_t from, char open, char close) const
    {
        std::size_t depth = 0;
        for (std::size_t i = from; i < text.size(); ++i) {
            if (text[i] == open) ++depth;
            if (text[i] == close && --depth == 0) return i + 1;
        }
        return text.size();
    }
    /// The same for angle brackets, whose contents may hold comparisons within parentheses.
    std::size_t behindAngle(std::size_t from) const
    {
        std::size_t depth = 0;
        for (std::size_t i = from; i < text.size();) {
            if (text[i] == '(') {
                i = behindBracket(i, '(', ')');
                continue;
            }
            if (text[i] == '<') ++depth;
            if (text[i] == '>' && --depth == 0) return i + 1;
            ++i;
        }
        return text.size();
    }

    bool atOperator() const
    {
        if (!startsWith("operator") || !(name.empty() || nameEndsWith("::"))) return false;
        const std::size_t behind = pos + 8;
        if (behind >= text.size()) return false;
        const unsigned char c = static_cast<unsigned char>(text[behind]);
        return std::isalnum(c) == 0 && c != '_';
    }
    /// Symbols and target types of conversions contain blanks, stars and brackets: everything up to the
    /// parameters.
    void takeOperator()
    {
        std::size_t end = pos + 8;
        if (text.compare(end, 2, "()") == 0) end += 2;
        end = text.find('(', end);
        if (end == std::string::npos) end = text.size();
        name += text.substr(pos, end - pos);
        pos = end;
    }

    /// True when the parenthesis opened the parameter list and nothing follows that belongs to the name.
    bool takeParenthesis()
    {
        const std::size_t behind = behindBracket(pos, '(', ')');
        const bool bUnnamedScope = startsWith("(anonymous") || startsWith("(lambda") || startsWith("(unnamed");
        if (bUnnamedScope || nameEndsWith("::") || name == "decltype") {
            name += text.substr(pos, behind - pos);
            pos = behind;
            return false;
        }
        if (name.empty()) { // "void (* f(int))(double)": the name is inside
            ++pos;
            return false;
        }
        pos = behind;
        skipQualifiers();
        return !startsWith("::");
    }
    /// Between the parameters of an enclosing function and the "::" behind them.
    void skipQualifiers()
    {
        for (bool bFound = true; bFound && pos < text.size();) {
            bFound = false;
            for (const char* pWord : {" const", " volatile", " &&", " &"}) {
                if (startsWith(pWord)) {
                    pos += std::string(pWord).size();
                    bFound = true;
                }
            }
            if (startsWith(" [")) {
                pos = behindBracket(pos + 1, '[', ']');
                bFound = true;
            }
        }
    }

    void takeCharacter()
    {
        const char c = text[pos];
        if (c == '<') {
            const std::size_t behind = behindAngle(pos);
            const bool bLambda = startsWith("<lambda");
            name += bLambda ? std::string("<lambda>") : text.substr(pos, behind - pos);
            pos = behind;
            // gcc names a lambda's body by the lambda alone; no further parameter list need follow.
            if (bLambda && (pos == text.size() || text[pos] == ' ')) text.insert(pos, "()");
        } else if (c == '[') {
            pos = behindBracket(pos, '[', ']'); // "[abi:cxx11]" and the like
        } else {
            const bool bBreaks = c == ' ' || c == '*' || c == '&' || c == ')';
            if (bBreaks && !(c == ' ' && name == "decltype")) {
                name.clear();
            } else if (!bBreaks) {
                name += c;
            }
            ++pos;
        }
    }

    std::string text;
    std::string name;
    std::size_t pos = 0;
};

} // namespace

std::string qualifiedFunctionName(const std::string& signature)
{
    return SignatureScanner(signature).run();
}

} // namespace ORBI_LUMO25D
