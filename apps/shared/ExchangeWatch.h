#pragma once

#include <QString>

/// Follows one import or export, and can end it. Engines that tell nothing are not followed; their imports
/// can only be dropped at the end.
class ExchangeWatch
{
public:
    virtual ~ExchangeWatch() = default;

    /// Called within the import or export, on its thread, about 20 times a second at most: the stage
    /// ("reading", "building", "meshing" or "writing") and the fraction of it that is done, 0 to 1.
    virtual void Show(const QString& stage, double fraction) = 0;
    /// Asked after each Show and at the end.
    virtual bool IsCancelled() const = 0;
};
