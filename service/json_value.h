// Reading the service's JSON replies: a document that owns its parsed values, and views into it. The view of an absent
// value is a value of no kind, so that a chain of look-ups needs no checks in between.
#pragma once

#include <QByteArrayView>
#include <QString>

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

struct cJSON;

namespace service {

// Parses a signed 64-bit decimal: an optional sign and digits, nothing else.
[[nodiscard]] std::optional<qint64> parseDecimal(std::string_view text);

// One value of a JsonDocument; valid as long as the document lives.
class JsonValue {
public:
    JsonValue() = default;
    explicit JsonValue(const cJSON* node)
        : m_node(node)
    {}

    [[nodiscard]] bool isObject() const;
    [[nodiscard]] bool isArray() const;
    [[nodiscard]] bool isString() const;
    [[nodiscard]] bool isAbsentOrNull() const;

    // An object's member of exactly this name, the first if there are several.
    [[nodiscard]] JsonValue member(const char* name) const;

    // An array's elements; none for any other value.
    [[nodiscard]] std::vector<JsonValue> elements() const;

    // A number without fraction within +-(2^53 - 1), the range in which every integer is exact in a double,
    // or a string that is a decimal as parseDecimal() reads it.
    [[nodiscard]] std::optional<qint64> integer() const;

    // A number, its fraction cut, clamped to 32 bits; empty for any other value.
    [[nodiscard]] std::optional<int> clampedNumber() const;

    // A string's text and its UTF-8 bytes, which end at an escaped NUL; empty for any other value. The bytes are
    // the document's own.
    [[nodiscard]] QString text() const;
    [[nodiscard]] QByteArrayView utf8() const;

private:
    const cJSON* m_node = nullptr;
};

class JsonDocument {
public:
    // The most values of a reply, the documents inside its strings included. A value takes some 64 bytes in memory and
    // as little as two in the text, so that the reply's size alone does not bound the memory.
    static constexpr qsizetype kMaximumValues = 4'000'000;

    // An upper bound of the values in a JSON text.
    [[nodiscard]] static qsizetype countValues(QByteArrayView text);

    // Empty if `text` is not one whole JSON text with optional white space around it, is nested deeper than 1,000 levels
    // or may contain more than kMaximumValues. The document does not refer to `text`.
    [[nodiscard]] static std::optional<JsonDocument> parse(QByteArrayView text);

    [[nodiscard]] JsonValue root() const { return JsonValue(m_root.get()); }

private:
    struct Deleter {
        void operator()(cJSON* node) const;
    };

    explicit JsonDocument(cJSON* root)
        : m_root(root)
    {}

    std::unique_ptr<cJSON, Deleter> m_root;
};

}  // namespace service
