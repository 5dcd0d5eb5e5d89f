#include "opening/review_preset.h"

#include "environment/bundle.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace tessary {

namespace {

std::optional<ReviewPreset> decodePreset(const QJsonValue& value) {
    if (!value.isObject())
        return std::nullopt;
    const QJsonObject object = value.toObject();
    const QJsonValue title = object.value("title");
    const QJsonValue manifest = object.value("manifest");
    const QJsonValue results = object.value("results");
    if (object.size() != 3 || !title.isString() || !manifest.isString() || !results.isString())
        return std::nullopt;
    return ReviewPreset{title.toString().toStdString(),
                        expandUserPath(manifest.toString().toStdString()).string(),
                        expandUserPath(results.toString().toStdString()).string()};
}

} // namespace

std::optional<std::vector<ReviewPreset>> decodePresets(const QByteArray& json) {
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError || !document.isArray())
        return std::nullopt;
    std::vector<ReviewPreset> presets;
    for (const QJsonValue& value : document.array()) {
        auto preset = decodePreset(value);
        if (!preset)
            return std::nullopt;
        presets.push_back(std::move(*preset));
    }
    return presets;
}

} // namespace tessary
