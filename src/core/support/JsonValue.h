#pragma once

#include <QString>
#include <memory>
#include <utility>
#include <variant>
#include <vector>

namespace scrivel {

// A JSON value whose object members keep the order in which they were added.
// Qt's QJsonObject always sorts its keys, but several documents of ours have a
// fixed member order (preset records, request bodies), so encoding goes
// through this type and JsonWriter instead.
class JsonValue {
public:
    using Array = std::vector<JsonValue>;
    using Member = std::pair<QString, JsonValue>;
    using Object = std::vector<Member>;

    JsonValue() = default; // null
    JsonValue(std::nullptr_t) {}
    JsonValue(bool value) : m_value(value) {}
    JsonValue(int value) : m_value(static_cast<double>(value)) {}
    JsonValue(qint64 value) : m_value(static_cast<double>(value)) {}
    JsonValue(double value) : m_value(value) {}
    JsonValue(const QString& value) : m_value(value) {}
    JsonValue(const char*) = delete; // spell out QStringLiteral / QString::fromUtf8
    JsonValue(Array value) : m_value(std::make_shared<Array>(std::move(value))) {}
    JsonValue(Object value) : m_value(std::make_shared<Object>(std::move(value))) {}

    static JsonValue array() { return JsonValue(Array{}); }
    static JsonValue object() { return JsonValue(Object{}); }

    bool isNull() const { return std::holds_alternative<std::monostate>(m_value); }
    bool isBool() const { return std::holds_alternative<bool>(m_value); }
    bool isNumber() const { return std::holds_alternative<double>(m_value); }
    bool isString() const { return std::holds_alternative<QString>(m_value); }
    bool isArray() const { return std::holds_alternative<std::shared_ptr<Array>>(m_value); }
    bool isObject() const { return std::holds_alternative<std::shared_ptr<Object>>(m_value); }

    bool toBool() const { return std::get<bool>(m_value); }
    double toNumber() const { return std::get<double>(m_value); }
    const QString& toString() const { return std::get<QString>(m_value); }
    const Array& toArray() const { return *std::get<std::shared_ptr<Array>>(m_value); }
    const Object& toObject() const { return *std::get<std::shared_ptr<Object>>(m_value); }

    // Appends a member to an object value (the value must be an object).
    JsonValue& insert(const QString& key, JsonValue value);
    // Appends an element to an array value (the value must be an array).
    JsonValue& append(JsonValue value);

private:
    void detach();

    std::variant<std::monostate, bool, double, QString, std::shared_ptr<Array>,
                 std::shared_ptr<Object>>
        m_value;
};

} // namespace scrivel
