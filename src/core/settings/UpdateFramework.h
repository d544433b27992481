#pragma once

namespace scrivel {

// The software-update framework's standard controller, as far as Scrivel
// drives it. The framework brings its own interface for downloading and
// installing; Scrivel only starts it, asks it to check and reads or writes its
// automatic-check preference.
class UpdateFramework {
public:
    virtual ~UpdateFramework() = default;

    virtual bool canCheckForUpdates() const = 0;
    virtual void checkForUpdates() = 0;
    virtual bool automaticallyChecksForUpdates() const = 0;
    virtual void setAutomaticallyChecksForUpdates(bool checks) = 0;
};

} // namespace scrivel
