#include "tests/report/schema_check.h"

#include <QJsonArray>
#include <QRegularExpression>

#include <cmath>

namespace testsupport {

namespace {

class SchemaCheck {
public:
    explicit SchemaCheck(const QJsonObject& root)
        : m_root(root)
    {}

    QStringList findings(const QJsonValue& value, const QJsonObject& schema, const QString& place)
    {
        m_findings.clear();
        check(value, schema, place);
        return m_findings;
    }

private:
    void check(const QJsonValue& value, const QJsonObject& schema, const QString& place)
    {
        for (auto keyword = schema.begin(); keyword != schema.end(); ++keyword) {
            checkKeyword(keyword.key(), keyword.value(), value, schema, place);
        }
    }

    void checkKeyword(const QString& keyword, const QJsonValue& rule, const QJsonValue& value,
                      const QJsonObject& schema, const QString& place)
    {
        const auto is = [&keyword](const char* name) { return keyword == QLatin1StringView(name); };
        if (is("$ref")) {
            check(value, definition(rule.toString()), place);
        } else if (is("oneOf")) {
            checkOneOf(value, rule.toArray(), place);
        } else if (is("const")) {
            expect(value == rule, place, keyword);
        } else if (is("type")) {
            const QJsonArray types = rule.isArray() ? rule.toArray() : QJsonArray{rule};
            expect(types.contains(typeOf(value)), place, keyword);
        } else if (is("minimum")) {
            expect(!value.isDouble() || value.toInteger() >= rule.toInteger(), place, keyword);
        } else if (is("maximum")) {
            expect(!value.isDouble() || value.toInteger() <= rule.toInteger(), place, keyword);
        } else if (is("pattern")) {
            const QRegularExpression pattern(rule.toString());
            expect(!value.isString() || pattern.match(value.toString()).hasMatch(), place, keyword);
        } else if (is("items")) {
            const QJsonArray items = value.toArray();
            for (qsizetype i = 0; i < items.size(); ++i) {
                check(items.at(i), rule.toObject(), place + QStringLiteral("[%1]").arg(i));
            }
        } else if (is("required")) {
            for (const auto& name : rule.toArray()) {
                expect(value.toObject().contains(name.toString()), place, keyword);
            }
        } else if (is("properties")) {
            checkMembers(value.toObject(), rule.toObject(), place);
        } else if (is("additionalProperties")) {
            for (const QString& name : value.toObject().keys()) {
                expect(schema[QLatin1StringView("properties")].toObject().contains(name), place, keyword);
            }
        } else if (!is("$schema") && !is("$defs") && !is("title") && !is("description")) {
            m_findings.append(QStringLiteral("the schema's keyword %1 is not known").arg(keyword));
        }
    }

    void checkMembers(const QJsonObject& object, const QJsonObject& schemas, const QString& place)
    {
        for (auto member = object.begin(); member != object.end(); ++member) {
            check(member.value(), schemas[member.key()].toObject(), place + QLatin1Char('.') + member.key());
        }
    }

    void checkOneOf(const QJsonValue& value, const QJsonArray& schemas, const QString& place)
    {
        int matching = 0;
        QStringList findings;
        for (const auto& schema : schemas) {
            const QStringList found = SchemaCheck(m_root).findings(value, schema.toObject(), place);
            matching += found.isEmpty() ? 1 : 0;
            findings += found;
        }
        if (matching != 1) { m_findings += findings + QStringList(place + QStringLiteral(": oneOf")); }
    }

    [[nodiscard]] QJsonObject definition(const QString& reference) const
    {
        const QString name = reference.section(QLatin1Char('/'), -1);
        return m_root[QLatin1StringView("$defs")].toObject().value(name).toObject(
            {{QStringLiteral("no definition of ") + name, true}});
    }

    static QString typeOf(const QJsonValue& value)
    {
        switch (value.type()) {
        case QJsonValue::Bool:
            return QStringLiteral("boolean");
        case QJsonValue::Double:
            return std::trunc(value.toDouble()) == value.toDouble() ? QStringLiteral("integer")
                                                                    : QStringLiteral("number");
        case QJsonValue::String:
            return QStringLiteral("string");
        case QJsonValue::Array:
            return QStringLiteral("array");
        case QJsonValue::Object:
            return QStringLiteral("object");
        default:
            return QStringLiteral("null");
        }
    }

    void expect(bool holds, const QString& place, const QString& keyword)
    {
        if (!holds) { m_findings.append(place + QStringLiteral(": ") + keyword); }
    }

    QJsonObject m_root;
    QStringList m_findings;
};

}  // namespace

QStringList schemaFindings(const QJsonValue& value, const QJsonObject& schema)
{
    return SchemaCheck(schema).findings(value, schema, QStringLiteral("$"));
}

}  // namespace testsupport
