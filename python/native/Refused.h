#pragma once

#include <algorithm>
#include <stdexcept>
#include <string>

namespace OV::Python
{

/// Which exception of Python a sentence is told by; see orvane/_errors.py.
enum class Trouble
{
    Settings, ///< a field out of range, unknown or of the wrong kind
    File,     ///< a file that cannot be read or written
    Node,     ///< a node that there isn't
    Context,  ///< no GL, or too little of it
    Closed,   ///< what it is asked of is gone
    Value,    ///< an argument out of range: a plain ValueError
};

/// What a person is told in place of what was asked for.
class Refused : public std::runtime_error
{
public:
    Refused(Trouble trouble, const std::string& sentence) : std::runtime_error(Whole(sentence)), trouble(trouble) {}

    Trouble trouble;

private:
    /// A zero byte in a name would end what is told of it.
    static std::string Whole(std::string sentence)
    {
        std::replace(sentence.begin(), sentence.end(), '\0', '?');
        return sentence;
    }
};

} // namespace OV::Python
