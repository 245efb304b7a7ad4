#pragma once

namespace platform {

// The image control of the cover designer (`ImagXpress`). Its members arrive with the designer.
class ImageControl {
public:
    virtual ~ImageControl() = default;
};

// The scanner (`TwainPRO`). Its members arrive with scanner input.
class Scanner {
public:
    virtual ~Scanner() = default;
};

// The printer (`PrintPRO`). Its members arrive with cover printing.
class Printer {
public:
    virtual ~Printer() = default;
};

} // namespace platform
