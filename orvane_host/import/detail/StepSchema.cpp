#include "orvane_host/import/detail/StepSchema.h"

#include "orvane_host/import/detail/ModelText.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <istream>
#include <memory>

namespace OV::Host
{

namespace
{

/// Headers with long lists of authors are well below.
constexpr std::size_t kHeaderBytes = 65536;

/// What a name of a schema may have; longer ones are no names.
constexpr std::size_t kMaxName = 64;

std::string ReadStart(const std::string& path)
{
    std::string start(kHeaderBytes, '\0');
    const std::unique_ptr<std::istream> stream = OpenModelText(path, 2 * kHeaderBytes);
    stream->read(&start[0], static_cast<std::streamsize>(start.size()));
    start.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream->gcount(), 0)));
    return start;
}

bool StartsWith(const std::string& text, const std::string& start)
{
    return text.compare(0, start.size(), start) == 0;
}

} // namespace

std::string ReadStepSchema(const std::string& path)
{
    const std::string start = ReadStart(path);
    const std::size_t mark = start.find("ISO-10303-21");
    const std::size_t keyword = start.find("FILE_SCHEMA");
    // A byte order mark and white space may stand before it.
    const bool isFirst = mark != std::string::npos && start.find_first_not_of("\xEF\xBB\xBF \t\r\n") == mark;
    if (!isFirst || keyword == std::string::npos)
    {
        return {};
    }
    const std::size_t open = start.find('\'', keyword);
    const std::size_t close = open == std::string::npos ? open : start.find('\'', open + 1);
    if (close == std::string::npos || start.find(';', keyword) < close || close - open - 1 > kMaxName)
    {
        return {};
    }
    std::string schema = start.substr(open + 1, close - open - 1);
    std::transform(schema.begin(), schema.end(), schema.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    return schema;
}

bool IsBuildingSchema(const std::string& schema)
{
    return StartsWith(schema, "IFC");
}

bool IsStepSchemaRead(const std::string& schema)
{
    return StartsWith(schema, "IFC2X3");
}

} // namespace OV::Host
