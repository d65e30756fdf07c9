// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QByteArrayList>

#include <cstdint>
#include <vector>

namespace tests {

/// Writes a model file in the GGUF format, version 3: what describes the model first, then the
/// tensors. Every tensor holds 32-bit floats.
class GgufWriter {
public:
    void add(const QByteArray& key, quint32 value);
    void add(const QByteArray& key, float value);
    void add(const QByteArray& key, bool value);
    void add(const QByteArray& key, const QByteArray& value);
    void add(const QByteArray& key, const QByteArrayList& values);
    void add(const QByteArray& key, const std::vector<qint32>& values);

    /// A tensor of the given numbers, row by row: `width` numbers to a row.
    void addTensor(const QByteArray& name, qsizetype width, std::vector<float> values);

    /// The whole file.
    QByteArray file() const;

private:
    struct Tensor {
        QByteArray name;
        qsizetype width;
        std::vector<float> values;
    };

    void beginEntry(const QByteArray& key, quint32 type);

    QByteArray m_entries;
    quint64 m_entryCount = 0;
    std::vector<Tensor> m_tensors;
};

} // namespace tests
