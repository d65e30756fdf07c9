// SPDX-License-Identifier: MIT
#include "Platform/Store/Attribute.h"

#include "Platform/Store/ModelContext.h"
#include "Platform/Store/TextList.h"

#include <QTimeZone>

namespace platform {

Attribute::Attribute(PersistentModel& record, QString name)
    : m_record(record)
    , m_name(std::move(name)) {
    record.m_attributes.append(this);
}

void Attribute::markChanged() {
    if (m_record.m_context)
        m_record.m_context->markChanged(m_record);
}

DateAttribute::DateAttribute(PersistentModel& record, QString name, const QDateTime& initial)
    : Attribute(record, std::move(name))
    , m_value(initial.toUTC()) {}

DateAttribute& DateAttribute::operator=(const QDateTime& value) {
    if (m_value.valueBypassingBindings() != value) {
        markChanged();
        m_value.setValue(value.toUTC());
    }
    return *this;
}

QByteArray DateAttribute::encoded() const {
    return m_value.valueBypassingBindings().toString(Qt::ISODateWithMs).toLatin1();
}

bool DateAttribute::restore(const QByteArray& encoded) {
    QDateTime value = QDateTime::fromString(QString::fromUtf8(encoded), Qt::ISODateWithMs);
    if (value.timeSpec() == Qt::LocalTime)
        value.setTimeZone(QTimeZone::utc());
    if (value.isValid())
        m_value.setValue(value.toUTC());
    return value.isValid();
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
