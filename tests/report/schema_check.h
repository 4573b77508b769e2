// Holds a JSON value against a JSON Schema, as far as ours goes: $ref within the document, oneOf, const, type,
// minimum, maximum, pattern, items, properties, required and additionalProperties. Any other keyword is a finding, so
// that nothing in a schema is passed over.
#pragma once

#include <QJsonObject>
#include <QStringList>

namespace testsupport {

// What is wrong, a line for each finding; empty when the value is as the schema says.
[[nodiscard]] QStringList schemaFindings(const QJsonValue& value, const QJsonObject& schema);

}  // namespace testsupport
