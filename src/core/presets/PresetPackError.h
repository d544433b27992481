#pragma once

#include <QCoreApplication>
#include <QString>

namespace scrivel {

// Why a preset pack was refused.
class PresetPackError {
    Q_DECLARE_TR_FUNCTIONS(PresetPackError)

public:
    enum class Kind { unsupportedFormatVersion, wrongKind, invalidPreset, invalidJSON, emptyPack };

    static PresetPackError unsupportedFormatVersion(qint64 version) {
        PresetPackError error(Kind::unsupportedFormatVersion);
        error.m_version = version;
        return error;
    }
    static PresetPackError wrongKind(const QString& kind) {
        PresetPackError error(Kind::wrongKind);
        error.m_detail = kind;
        return error;
    }
    // detail is "empty name" or "empty providerID".
    static PresetPackError invalidPreset(const QString& detail) {
        PresetPackError error(Kind::invalidPreset);
        error.m_detail = detail;
        return error;
    }
    static PresetPackError invalidJSON() { return PresetPackError(Kind::invalidJSON); }
    static PresetPackError emptyPack() { return PresetPackError(Kind::emptyPack); }

    Kind kind() const { return m_kind; }
    qint64 version() const { return m_version; }
    // The kind text of wrongKind or the detail of invalidPreset; diagnostics only.
    const QString& detail() const { return m_detail; }

    // The sentence the user sees.
    QString message() const;

    friend bool operator==(const PresetPackError&, const PresetPackError&) = default;

private:
    explicit PresetPackError(Kind kind) : m_kind(kind) {}

    Kind m_kind;
    qint64 m_version = 0;
    QString m_detail;
};

} // namespace scrivel
