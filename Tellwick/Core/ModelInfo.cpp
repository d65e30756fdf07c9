// SPDX-License-Identifier: MIT
#include "Tellwick/Core/ModelInfo.h"

namespace tellwick {

using namespace Qt::StringLiterals;

QString rawValue(ModelSource source) {
    switch (source) {
    case ModelSource::appleIntelligence:
        return u"appleIntelligence"_s;
    case ModelSource::ollama:
        return u"ollama"_s;
    }
    Q_UNREACHABLE();
}

std::optional<ModelSource> modelSourceFromRawValue(QStringView text) {
    for (const ModelSource source : {ModelSource::appleIntelligence, ModelSource::ollama})
        if (text == rawValue(source))
            return source;
    return std::nullopt;
}

ModelInfo::ModelInfo(QString id, QString name, ModelSource source, std::optional<QString> detail)
    : detail(std::move(detail))
    , m_id(std::move(id))
    , m_name(std::move(name))
    , m_source(source) {}

ModelInfo ModelInfo::onDevice() {
    return {u"apple-intelligence"_s, u"Apple Intelligence"_s, ModelSource::appleIntelligence,
            u"On-device · Private"_s};
}

QString ModelInfo::ollamaID(const QString& modelName) {
    return "ollama-"_L1 + modelName;
}

} // namespace tellwick
