// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Observation/Observed.h"

#include <QDateTime>
#include <QStringList>

namespace platform {

class PersistentModel;

/// One attribute of a record: a member of the record's class, which describes the store's column
/// and holds the value. Setting it marks the record as changed until the next save.
class Attribute {
public:
    /// Joins the record's attributes, whose columns stand in the order of construction.
    Attribute(PersistentModel& record, QString name);
    virtual ~Attribute() = default;

    /// The name of the column.
    const QString& name() const { return m_name; }

    /// The value as the column's text, in UTF-8.
    virtual QByteArray encoded() const = 0;

    /// Takes over what the store holds; the record does not count as changed. False, and nothing
    /// taken, when the text cannot be read.
    virtual bool restore(const QByteArray& encoded) = 0;

protected:
    void markChanged();

private:
    Q_DISABLE_COPY(Attribute)
    PersistentModel& m_record;
    QString m_name;
};

/// A point in time in UTC, to the millisecond; in the store an ISO 8601 text. Readers are notified
/// when it actually changes.
class DateAttribute final : public Attribute {
public:
    DateAttribute(PersistentModel& record, QString name, const QDateTime& initial);

    QDateTime value() const { return m_value.value(); }
    DateAttribute& operator=(const QDateTime& value);

    QByteArray encoded() const override;
    /// Also reads texts with a finer fraction, or without a time zone: they mean UTC.
    bool restore(const QByteArray& encoded) override;

private:
    Observed<QDateTime> m_value;
};

/// An ordered list of texts; in the store a JSON array. Readers are notified at every assignment.
class TextListAttribute final : public Attribute {
public:
    TextListAttribute(PersistentModel& record, QString name);

    const QStringList& value() const { return m_value.value(); }
    TextListAttribute& operator=(QStringList value);

    QByteArray encoded() const override;
    bool restore(const QByteArray& encoded) override;

private:
    ObservedOnAssignment<QStringList> m_value;
};

} // namespace platform
