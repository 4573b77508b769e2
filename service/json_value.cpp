#include "service/json_value.h"

#include <cjson/cJSON.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace service {

namespace {

constexpr double kMaximumExactInteger = 9007199254740991.0;  // 2^53 - 1

// White space of JSON. cJSON itself treats every control character as white space.
bool isWhiteSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

}  // namespace

std::optional<qint64> parseDecimal(std::string_view text)
{
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) { return std::nullopt; }
    }
    qint64 number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end) { return std::nullopt; }
    return number;
}

bool JsonValue::isObject() const
{
    return cJSON_IsObject(m_node) != 0;
}

bool JsonValue::isArray() const
{
    return cJSON_IsArray(m_node) != 0;
}

bool JsonValue::isString() const
{
    return cJSON_IsString(m_node) != 0;
}

bool JsonValue::isAbsentOrNull() const
{
    return m_node == nullptr || cJSON_IsNull(m_node) != 0;
}

JsonValue JsonValue::member(const char* name) const
{
    return isObject() ? JsonValue(cJSON_GetObjectItemCaseSensitive(m_node, name)) : JsonValue();
}

std::vector<JsonValue> JsonValue::elements() const
{
    std::vector<JsonValue> values;
    if (cJSON_IsArray(m_node) != 0) {
        for (const cJSON* node = m_node->child; node != nullptr; node = node->next) {
            values.emplace_back(node);
        }
    }
    return values;
}

std::optional<qint64> JsonValue::integer() const
{
    if (isString()) { return parseDecimal(m_node->valuestring); }
    if (cJSON_IsNumber(m_node) == 0) { return std::nullopt; }
    const double number = m_node->valuedouble;
    if (std::fabs(number) > kMaximumExactInteger || std::trunc(number) != number) { return std::nullopt; }
    return static_cast<qint64>(number);
}

std::optional<int> JsonValue::clampedNumber() const
{
    if (cJSON_IsNumber(m_node) == 0) { return std::nullopt; }
    return m_node->valueint;
}

QString JsonValue::text() const
{
    return isString() ? QString::fromUtf8(m_node->valuestring) : QString();
}

QByteArrayView JsonValue::utf8() const
{
    return isString() ? QByteArrayView(m_node->valuestring) : QByteArrayView();
}

// Each value but the first follows a comma or opens an array or an object.
qsizetype JsonDocument::countValues(QByteArrayView text)
{
    const auto precedesValue = [](char c) { return c == ',' || c == '[' || c == '{'; };
    return 1 + std::count_if(text.begin(), text.end(), precedesValue);
}

std::optional<JsonDocument> JsonDocument::parse(QByteArrayView text)
{
    if (countValues(text) > kMaximumValues) { return std::nullopt; }
    const char* rest = nullptr;
    const char* const end = text.data() + text.size();
    JsonDocument document(
        cJSON_ParseWithLengthOpts(text.data(), static_cast<std::size_t>(text.size()), &rest, 0));
    if (document.m_root == nullptr || !std::all_of(rest, end, isWhiteSpace)) { return std::nullopt; }
    return document;
}

void JsonDocument::Deleter::operator()(cJSON* node) const
{
    cJSON_Delete(node);
}

}  // namespace service
