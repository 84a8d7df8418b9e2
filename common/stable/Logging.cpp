#include "common/stable/Logging.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace zel {

namespace {

constexpr const char* kAlgoCategory = "zel.algo";
constexpr const char* kGenericCategory = "zel.generic";

class Registry
{
public:
    Registry()
    {
        findOrCreate(kAlgoCategory, QtDebugMsg);
        findOrCreate(kGenericCategory, QtDebugMsg);
    }

    QLoggingCategory* find(const char* name)
    {
        const std::lock_guard lock(m_mutex);
        const auto found = m_categories.find(name);
        return found == m_categories.end() ? nullptr : found->second.get();
    }

    QLoggingCategory& findOrCreate(const char* name, QtMsgType level)
    {
        const std::lock_guard lock(m_mutex);
        auto found = m_categories.find(name);
        if (found == m_categories.end()) {
            found = m_categories.emplace(name, nullptr).first;
            // A QLoggingCategory keeps the pointer to its name, so the name must be the map's own
            // copy.
            found->second = std::make_unique<QLoggingCategory>(found->first.c_str(), level);
        }
        return *found->second;
    }

private:
    std::mutex m_mutex;
    // std::string orders by bytes as strcmp does; std::less<> finds a C string without a copy.
    std::map<std::string, std::unique_ptr<QLoggingCategory>, std::less<>> m_categories;
};

Registry& registry()
{
    // Never destroyed: static objects may still log while the process ends.
    static auto* const instance = new Registry;
    return *instance;
}

// Registers the two categories when the library is loaded.
[[maybe_unused]] const Registry& g_registeredOnLoad = registry();

} // namespace

const QLoggingCategory& algoLog()
{
    static const QLoggingCategory& category = LoggingRegistry::category(kAlgoCategory);
    return category;
}

QLoggingCategory& LoggingRegistry::category(const char* name, QtMsgType level)
{
    return registry().findOrCreate(name, level);
}

QLoggingCategory& LoggingRegistry::category(const char* name)
{
    QLoggingCategory* const known = registry().find(name);
    return known != nullptr ? *known : *registry().find(kGenericCategory);
}

} // namespace zel
