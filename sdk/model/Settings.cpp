#include <cadex/Base_Settings.hxx>

#include <map>
#include <mutex>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace cadex {

struct Base_Settings::Impl
{
    using Value = std::variant<int, double, bool, Base_UTF16String>;

    void Store(int id, Value value)
    {
        const std::lock_guard lock(mutex);
        values[id] = std::move(value);
    }

    std::optional<Value> Find(int id)
    {
        const std::lock_guard lock(mutex);
        const auto found = values.find(id);
        return found != values.end() ? std::optional(found->second) : std::nullopt;
    }

    template <typename T>
    T Number(int id, T fallback)
    {
        const std::optional<Value> value = Find(id);
        if (!value) {
            return fallback;
        }
        return std::visit(
            [fallback](const auto& stored) -> T {
                if constexpr (std::is_arithmetic_v<std::decay_t<decltype(stored)>>) {
                    return static_cast<T>(stored);
                } else {
                    return fallback;
                }
            },
            *value);
    }

    std::mutex mutex;
    std::map<int, Value> values;
};

Base_Settings::Base_Settings() : myImpl(std::make_unique<Impl>()) {}

Base_Settings::~Base_Settings() = default;

const std::shared_ptr<Base_Settings>& Base_Settings::Default()
{
    static const std::shared_ptr<Base_Settings> settings(new Base_Settings);
    return settings;
}

void Base_Settings::SetValue(const Id theId, int theVal)
{
    myImpl->Store(theId, theVal);
}

void Base_Settings::SetValue(const Id theId, double theVal)
{
    myImpl->Store(theId, theVal);
}

void Base_Settings::SetValue(const Id theId, bool theVal)
{
    myImpl->Store(theId, theVal);
}

void Base_Settings::SetValue(const Id theId, const UTF16* theVal)
{
    myImpl->Store(theId, Base_UTF16String(theVal));
}

bool Base_Settings::BoolValue(const Id theId, bool theDefault) const
{
    return myImpl->Number(theId, theDefault);
}

int Base_Settings::IntValue(const Id theId, int theDefault) const
{
    return myImpl->Number(theId, theDefault);
}

double Base_Settings::DoubleValue(const Id theId, double theDefault) const
{
    return myImpl->Number(theId, theDefault);
}

Base_UTF16String Base_Settings::StringValue(const Id theId, const Base_UTF16String& theDefault) const
{
    const auto value = myImpl->Find(theId);
    const auto* text = value ? std::get_if<Base_UTF16String>(&*value) : nullptr;
    return text != nullptr ? *text : theDefault;
}

} // namespace cadex
