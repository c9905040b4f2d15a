// The host's application-service base and the two framework objects that a
// service receives when it starts: the command-execution context (which hands
// out the host's language object) and the parent window.
#pragma once
#include <windows.h>

class CConnectLanguage;

// What a service is given when the host starts it.
struct ICommandExecutionContext {
    virtual ~ICommandExecutionContext() = default;
    // The host's language object; null when the host has none.
    virtual CConnectLanguage* GetLanguage() = 0;
};

// A window of the UI framework: the part services look at.
class CWnd {
public:
    explicit CWnd(HWND window = nullptr) : m_hWnd(window) {}
    HWND GetSafeHwnd() const { return m_hWnd; }
    HWND m_hWnd;
};

// Base of every application service. A service is one heap object, reached
// through the singleton manager, started once with InitAppService.
class VAppService {
public:
    virtual ~VAppService() = default;

    // The host's bookkeeping around a service.
    virtual void OnAppIdle() {}
    virtual bool OnAppExit() { return true; }
    virtual void OnActivate(bool /*active*/) {}
    virtual bool PreTranslateCommand(UINT /*command*/) { return false; }
    virtual void OnSettingsChanged() {}
    virtual int GetServicePriority() const { return 0; }

    virtual bool InitAppService(ICommandExecutionContext* context, CWnd* parent) = 0;

    virtual bool IsServiceReady() const { return true; }
    virtual void* GetServiceWindow() const { return nullptr; }
    virtual void* GetCommandTarget() const { return nullptr; }
    virtual int GetServiceFlags() const { return 0; }
};
