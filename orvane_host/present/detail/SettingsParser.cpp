#include "orvane_host/present/detail/SettingsParser.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

constexpr std::size_t kMostBytes = std::size_t(1) << 20;
constexpr std::size_t kMostLevels = 16;
/// Of the library's exceptions: a number beyond the range of float.
constexpr int kNumberOverflow = 406;

/// Builds a document from what the parser meets. The library's own builder takes the last of two
/// values of one name without a word, and nests as deep as it is told.
class DocumentBuilder
{
public:
    explicit DocumentBuilder(const std::string& text) : m_text(text) {}

    ReadJson TakeDocument() { return std::move(m_document); }
    const std::string& Error() const { return m_error; }

    // What the parser calls; false ends it.
    bool null() { return Add(nullptr); }
    bool boolean(bool value) { return Add(value); }
    bool number_integer(ReadJson::number_integer_t value) { return Add(value); }
    bool number_unsigned(ReadJson::number_unsigned_t value) { return Add(value); }
    bool number_float(ReadJson::number_float_t value, const std::string&) { return Add(value); }
    bool string(std::string& value) { return Add(std::move(value)); }
    bool binary(ReadJson::binary_t&) { return false; }
    bool start_object(std::size_t) { return Open(ReadJson::object()); }
    bool end_object() { return Close(); }
    bool start_array(std::size_t) { return Open(ReadJson::array()); }
    bool end_array() { return Close(); }

    bool key(std::string& name)
    {
        if (m_open.back()->contains(name))
        {
            m_error = "the name " + Shown(name) + " stands twice in one object";
            return false;
        }
        m_key = std::move(name);
        return true;
    }

    bool parse_error(std::size_t position, const std::string&, const nlohmann::detail::exception& trouble)
    {
        // Of the bytes up to there the last is the one that did not fit.
        const std::size_t before = std::min(position > 0 ? position - 1 : 0, m_text.size());
        const auto end = m_text.begin() + static_cast<std::ptrdiff_t>(before);
        const auto line = std::count(m_text.begin(), end, '\n') + 1;
        const auto lineStart = m_text.rfind('\n', before > 0 ? before - 1 : 0);
        const std::size_t column = before - (line > 1 ? lineStart + 1 : 0) + 1;
        m_error = "not JSON: line " + std::to_string(line) + ", column " + std::to_string(column) +
                  (trouble.id == kNumberOverflow ? " holds a number that is too large"
                   : before >= m_text.size()     ? " ends too soon"
                                                 : " cannot be read");
        return false;
    }

private:
    template <typename Value>
    ReadJson* Place(Value&& value)
    {
        if (m_open.empty())
        {
            m_document = std::forward<Value>(value);
            return &m_document;
        }
        ReadJson& parent = *m_open.back();
        if (parent.is_array())
        {
            return &parent.emplace_back(std::forward<Value>(value));
        }
        return &(parent[m_key] = std::forward<Value>(value));
    }

    template <typename Value>
    bool Add(Value&& value)
    {
        Place(std::forward<Value>(value));
        return true;
    }

    bool Open(ReadJson&& container)
    {
        if (m_open.size() == kMostLevels)
        {
            m_error = "nests deeper than " + std::to_string(kMostLevels) + " levels";
            return false;
        }
        m_open.push_back(Place(std::move(container)));
        return true;
    }

    bool Close()
    {
        m_open.pop_back();
        return true;
    }

    const std::string& m_text;
    ReadJson m_document;
    /// From the document down; what is open does not move, since only the last of an array is.
    std::vector<ReadJson*> m_open;
    std::string m_key;
    std::string m_error;
};

} // namespace

std::optional<ReadJson> ParseJson(const std::string& text, std::string& error)
{
    if (text.size() > kMostBytes)
    {
        error = "is larger than 1 MiB";
        return std::nullopt;
    }
    // The library takes it for the end.
    if (text.find('\0') != std::string::npos)
    {
        error = "not JSON: it holds a zero byte";
        return std::nullopt;
    }
    DocumentBuilder builder(text);
    if (!ReadJson::sax_parse(text, &builder))
    {
        error = builder.Error();
        return std::nullopt;
    }
    return builder.TakeDocument();
}

} // namespace OV::Host::Detail
