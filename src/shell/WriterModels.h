#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace shell {

// One recorder model and the command set (driver type) the writing engine must use for it.
struct WriterModel {
    std::string_view name;
    int driverType;
};

// Every model name that means something to the program, in the order of the model table.
const std::vector<WriterModel> &writerModels();

// The driver type of a model, matched on the exact text; nullopt for a name in no row.
std::optional<int> driverTypeOfModel(std::string_view name);

} // namespace shell
