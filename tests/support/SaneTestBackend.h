#pragma once

#include <filesystem>

namespace testsupport {

// Points SANE at a configuration in `folder` that loads its `test` backend alone, and keeps that
// backend loaded for the rest of the process: it leaks a 64 KiB buffer of its own on a scan, and
// only a backend still loaded is named in the leak report, where the sanitizer run's
// suppression file finds it.
void useSaneTestBackend(const std::filesystem::path &folder);

} // namespace testsupport
