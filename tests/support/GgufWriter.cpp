// SPDX-License-Identifier: MIT
#include "tests/support/GgufWriter.h"

#include <bit>
#include <type_traits>

namespace tests {

namespace {

static_assert(std::endian::native == std::endian::little, "the format is little-endian");

enum ValueType : quint32 { UInt32 = 4, Int32 = 5, Float32 = 6, Bool = 7, String = 8, Array = 9 };
constexpr qsizetype alignment = 32;
constexpr quint32 tensorTypeFloat32 = 0;

template <class Number>
void put(QByteArray& bytes, Number number) {
    static_assert(std::is_arithmetic_v<Number>);
    bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

void putString(QByteArray& bytes, const QByteArray& text) {
    put(bytes, static_cast<quint64>(text.size()));
    bytes.append(text);
}

qsizetype aligned(qsizetype size) {
    return (size + alignment - 1) / alignment * alignment;
}

} // namespace

void GgufWriter::beginEntry(const QByteArray& key, quint32 type) {
    ++m_entryCount;
    putString(m_entries, key);
    put(m_entries, type);
}

void GgufWriter::add(const QByteArray& key, quint32 value) {
    beginEntry(key, UInt32);
    put(m_entries, value);
}

void GgufWriter::add(const QByteArray& key, float value) {
    beginEntry(key, Float32);
    put(m_entries, value);
}

void GgufWriter::add(const QByteArray& key, bool value) {
    beginEntry(key, Bool);
    put(m_entries, static_cast<quint8>(value));
}

void GgufWriter::add(const QByteArray& key, const QByteArray& value) {
    beginEntry(key, String);
    putString(m_entries, value);
}

void GgufWriter::add(const QByteArray& key, const QByteArrayList& values) {
    beginEntry(key, Array);
    put(m_entries, static_cast<quint32>(String));
    put(m_entries, static_cast<quint64>(values.size()));
    for (const QByteArray& value : values)
        putString(m_entries, value);
}

void GgufWriter::add(const QByteArray& key, const std::vector<qint32>& values) {
    beginEntry(key, Array);
    put(m_entries, static_cast<quint32>(Int32));
    put(m_entries, static_cast<quint64>(values.size()));
    for (const qint32 value : values)
        put(m_entries, value);
}

void GgufWriter::addTensor(const QByteArray& name, qsizetype width, std::vector<float> values) {
    m_tensors.push_back({name, width, std::move(values)});
}

QByteArray GgufWriter::file() const {
    QByteArray file("GGUF");
    put(file, quint32{3});
    put(file, static_cast<quint64>(m_tensors.size()));
    put(file, m_entryCount);
    file.append(m_entries);

    quint64 offset = 0;
    for (const Tensor& tensor : m_tensors) {
        const auto count = static_cast<qsizetype>(tensor.values.size());
        const qsizetype rows = count / tensor.width;
        putString(file, tensor.name);
        put(file, quint32{rows == 1 ? 1U : 2U});
        put(file, static_cast<quint64>(tensor.width));
        if (rows > 1)
            put(file, static_cast<quint64>(rows));
        put(file, tensorTypeFloat32);
        put(file, offset);
        offset += static_cast<quint64>(aligned(count * qsizetype{sizeof(float)}));
    }
    file.append(aligned(file.size()) - file.size(), '\0');
    for (const Tensor& tensor : m_tensors) {
        file.append(reinterpret_cast<const char*>(tensor.values.data()),
                    static_cast<qsizetype>(tensor.values.size() * sizeof(float)));
        file.append(aligned(file.size()) - file.size(), '\0');
    }
    return file;
}

} // namespace tests
