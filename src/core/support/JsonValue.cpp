#include "core/support/JsonValue.h"

namespace scrivel {

void JsonValue::detach() {
    // Copies of a JsonValue share their container until one of them is changed.
    if (auto* array = std::get_if<std::shared_ptr<Array>>(&m_value);
        array && array->use_count() > 1)
        *array = std::make_shared<Array>(**array);
    if (auto* object = std::get_if<std::shared_ptr<Object>>(&m_value);
        object && object->use_count() > 1)
        *object = std::make_shared<Object>(**object);
}

JsonValue& JsonValue::insert(const QString& key, JsonValue value) {
    Q_ASSERT(isObject());
    detach();
    std::get<std::shared_ptr<Object>>(m_value)->emplace_back(key, std::move(value));
    return *this;
}

JsonValue& JsonValue::append(JsonValue value) {
    Q_ASSERT(isArray());
    detach();
    std::get<std::shared_ptr<Array>>(m_value)->push_back(std::move(value));
    return *this;
}

} // namespace scrivel
