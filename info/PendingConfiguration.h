#pragma once

#include <QString>

// A node page's configuration edits that are not applied yet, whatever the node's kind.
class PendingConfiguration {
public:
    virtual ~PendingConfiguration() = default;

    // Some edit differs from the configuration the node runs now.
    virtual bool hasChanges() const = 0;
    // One line per changed field: what the node runs and what was chosen.
    virtual QString changesText() const = 0;
    // Back to the configuration the node runs now.
    virtual void discard() = 0;
    // Sends the chosen configuration on to be applied.
    virtual void apply() = 0;
};
