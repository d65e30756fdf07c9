// SPDX-License-Identifier: MIT
#include "Platform/Store/Attribute.h"

#include "Platform/Store/PersistentModel.h"
#include "Platform/Store/TextList.h"

namespace platform {

Attribute::Attribute(PersistentModel& record, QString name)
    : m_record(record)
    , m_name(std::move(name)) {
    record.m_attributes.append(this);
}

Attribute::~Attribute() = default;

void Attribute::markChanged() {
    m_record.markChanged();
}

DateAttribute::DateAttribute(PersistentModel& record, QString name, Instant initial)
    : Attribute(record, std::move(name))
    , m_value(initial) {}

DateAttribute& DateAttribute::operator=(Instant value) {
    if (m_value.valueBypassingBindings() != value) {
        markChanged();
        m_value.setValue(value);
    }
    return *this;
}

QByteArray DateAttribute::encoded() const {
    return toIsoText(m_value.valueBypassingBindings());
}

bool DateAttribute::restore(const QByteArray& encoded) {
    const auto value = instantFromIsoText(encoded);
    if (value)
        m_value.setValue(*value);
    return value.has_value();
}

TextListAttribute::TextListAttribute(PersistentModel& record, QString name)
    : Attribute(record, std::move(name)) {}

TextListAttribute& TextListAttribute::operator=(QStringList value) {
    markChanged();
    m_value.setValue(std::move(value));
    return *this;
}

QByteArray TextListAttribute::encoded() const {
    return textListToJson(m_value.value());
}

bool TextListAttribute::restore(const QByteArray& encoded) {
    auto value = textListFromJson(encoded);
    if (value)
        m_value.setValue(*std::move(value));
    return value.has_value();
}

} // namespace platform
