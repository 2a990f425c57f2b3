#include "Scrivly/model/AppSettings.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QSettings>

#include <array>

namespace scrivly {

namespace {

// How one field is written to and read from its JSON key. A decoder answers false for a value
// that must spoil the whole record; the defaults come from AppSettings' own initialisers.
struct Field {
    const char* key;
    QJsonValue (*encode)(const AppSettings& settings);
    bool (*decode)(const QJsonValue& value, AppSettings& settings);
};

bool decodeFlag(const QJsonValue& value, bool& flag) {
    if (!value.isBool()) {
        return false;
    }
    flag = value.toBool();
    return true;
}

// The coding keys, in their order.
const std::array<Field, 6> kFields{{
    {"onboardingDone", [](const AppSettings& s) { return QJsonValue(s.onboardingDone); },
     [](const QJsonValue& v, AppSettings& s) { return decodeFlag(v, s.onboardingDone); }},
    {"myName", [](const AppSettings& s) { return QJsonValue(s.myName); },
     [](const QJsonValue& v, AppSettings& s) {
         if (!v.isString()) {
             return false;
         }
         s.myName = v.toString();
         return true;
     }},
    {"paper",
     [](const AppSettings& s) {
         return QJsonValue(QString::fromStdString(Paper::rawValue(s.paper)));
     },
     [](const QJsonValue& v, AppSettings& s) {
         // A size this version does not know (written by a newer one) is not worth losing the
         // other settings over.
         s.paper = Paper::fromRawValue(v.toString().toStdString()).value_or(PaperSize::letter);
         return true;
     }},
    {"coverPage", [](const AppSettings& s) { return QJsonValue(s.coverPage); },
     [](const QJsonValue& v, AppSettings& s) { return decodeFlag(v, s.coverPage); }},
    {"includeImages", [](const AppSettings& s) { return QJsonValue(s.includeImages); },
     [](const QJsonValue& v, AppSettings& s) { return decodeFlag(v, s.includeImages); }},
    {"attachmentFolders",
     [](const AppSettings& s) {
         QJsonObject folders;
         for (auto entry = s.attachmentFolders.begin(); entry != s.attachmentFolders.end();
              ++entry) {
             folders.insert(entry.key(), entry.value());
         }
         return QJsonValue(folders);
     },
     [](const QJsonValue& v, AppSettings& s) {
         if (!v.isObject()) {
             return false;
         }
         const QJsonObject folders = v.toObject();
         for (auto entry = folders.begin(); entry != folders.end(); ++entry) {
             if (entry.value().isString()) {
                 s.attachmentFolders.insert(entry.key(), entry.value().toString());
             }
         }
         return true;
     }},
}};

} // namespace

QByteArray AppSettings::encoded() const {
    QJsonObject object;
    for (const Field& field : kFields) {
        object.insert(QLatin1String(field.key), field.encode(*this));
    }
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

AppSettings AppSettings::decoded(const QByteArray& data) {
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(data, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) {
        return {};
    }
    const QJsonObject object = document.object();
    AppSettings settings;
    for (const Field& field : kFields) {
        const QJsonValue value = object.value(QLatin1String(field.key));
        // A null counts as absent, as an optional key does.
        if (value.isUndefined() || value.isNull()) {
            continue;
        }
        if (!field.decode(value, settings)) {
            return {};
        }
    }
    return settings;
}

AppSettings AppSettings::load(QSettings& store) {
    const QVariant value = store.value(QLatin1String(kStoreKey));
    if (!value.isValid()) {
        return {};
    }
    return decoded(value.toByteArray());
}

void AppSettings::save(QSettings& store, const AppSettings& settings) {
    store.setValue(QLatin1String(kStoreKey), settings.encoded());
    store.sync();
}

} // namespace scrivly
