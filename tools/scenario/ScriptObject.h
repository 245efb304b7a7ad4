#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace scenario {

// An object of one of the system's classes made by `new CLASS as NAME`.
class ScriptObject {
public:
    virtual ~ScriptObject() = default;
    // The property's value as the user would see it written out; nullopt for an unknown property.
    virtual std::optional<std::string> get(const std::string &property) const = 0;
    // False for an unknown property. A run-time error of the class propagates as rt::RuntimeError.
    virtual bool set(const std::string &property, const std::string &value) = 0;
    // The routine's result as text ("" for none); nullopt for an unknown routine.
    virtual std::optional<std::string> call(const std::string &routine, const std::vector<std::string> &args) = 0;
};

// nullptr for a class the system doesn't have.
std::unique_ptr<ScriptObject> makeScriptObject(const std::string &className);

} // namespace scenario
