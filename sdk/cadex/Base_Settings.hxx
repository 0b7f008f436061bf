// Process-wide settings of the SDK, by number.
//
//     Base_Settings::Default()->SetValue(Base_Settings::ConcurrentMode, false);
#pragma once

#include <cadex/Base_Export.hxx>

#include <memory>

#include <cadex/Base_UTF16String.hxx>

namespace cadex {

/// All calls may come from any thread.
class CADEX_EXPORT Base_Settings
{
public:
    enum Id
    {
        ConcurrentMode, ///< bool: work in parallel where possible; true when never set
        Common_ConcurrentMode = ConcurrentMode,
        UseExceptions,      ///< bool: report failures by exceptions; false when never set
        UserDefined = 10000 ///< first number free for the application
    };

    static const std::shared_ptr<Base_Settings>& Default();
    ~Base_Settings();

    void SetValue(const Id theId, int theVal);
    void SetValue(const Id theId, double theVal);
    void SetValue(const Id theId, bool theVal);
    void SetValue(const Id theId, const UTF16* theVal);

    /// The stored value, or the given default when none is stored. Numbers convert into one another; text
    /// does not.
    bool BoolValue(const Id theId, bool theDefault) const;
    int IntValue(const Id theId, int theDefault) const;
    double DoubleValue(const Id theId, double theDefault) const;
    Base_UTF16String StringValue(const Id theId, const Base_UTF16String& theDefault) const;

protected:
    Base_Settings();

private:
    struct Impl;
    std::unique_ptr<Impl> myImpl;
};

} // namespace cadex
