#include "core/presets/PresetPackError.h"

namespace scrivel {

QString PresetPackError::message() const {
    switch (m_kind) {
    case Kind::unsupportedFormatVersion:
        return tr("This pack uses a format version Scrivel does not support yet.");
    case Kind::wrongKind:
        return tr("This file is not a Scrivel preset pack.");
    case Kind::invalidPreset:
        return tr("This pack has a preset that is missing a name or provider.");
    case Kind::invalidJSON:
        return tr("This file is not a valid Scrivel preset pack.");
    case Kind::emptyPack:
        return tr("This pack does not contain any presets.");
    }
    return {};
}

} // namespace scrivel
