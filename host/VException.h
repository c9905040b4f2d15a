// The host error-code library's exception: carries a numeric error code.
#pragma once
#include <exception>

#include "host/HostExport.h"

class TESK_HOST_API CVException : public std::exception {
public:
    explicit CVException(int code) : m_nCode(code) {}
    int GetCode() const { return m_nCode; }
    // Out of line, so that the host library holds the class's one vtable.
    const char* what() const noexcept override;

private:
    int m_nCode;
};

enum VellErrorCode : int {
    VELL_OK = 0,
    VELL_ERR_TRANSLATE = 101,
    VELL_ERR_NO_MEMORY = 102,
    VELL_ERR_PIXEL_FORMAT = 162,
    VELL_ERR_PLANE_SIZE = 65534,
};
