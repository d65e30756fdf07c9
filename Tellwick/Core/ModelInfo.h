// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

namespace tellwick {

/// Which kind of backend serves a model.
enum class ModelSource { appleIntelligence, ollama };

/// The text form of a source: "appleIntelligence" or "ollama".
QString rawValue(ModelSource source);

/// The source with exactly this text form, or none.
std::optional<ModelSource> modelSourceFromRawValue(QStringView rawValue);

/// The descriptor of one model that the user can select.
class ModelInfo {
public:
    ModelInfo(QString id, QString name, ModelSource source,
              std::optional<QString> detail = std::nullopt);

    /// Unique within the catalogue of models, and what a selection is kept by.
    const QString& id() const { return m_id; }
    const QString& name() const { return m_name; }
    ModelSource source() const { return m_source; }

    /// A second line for the screen, where there is one.
    std::optional<QString> detail;

    /// Two descriptors are equal when their identifiers are, whatever else they tell.
    friend bool operator==(const ModelInfo& a, const ModelInfo& b) { return a.m_id == b.m_id; }

    /// The descriptor of the one model that the platform itself offers.
    static ModelInfo onDevice();

    /// The identifier of a local server's model, from the name under which the server lists it.
    static QString ollamaID(const QString& modelName);

private:
    QString m_id;
    QString m_name;
    ModelSource m_source;
};

} // namespace tellwick
