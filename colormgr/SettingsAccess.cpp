#include "colormgr/SettingsAccess.h"

#include "host/SingletonManager.h"

namespace colormgr {
namespace {
// Error objects of the store are not acted upon.
void Drop(IVError* error) {
    if (error) error->Release();
}
}  // namespace

CSettingsGroupAccess::CSettingsGroupAccess(int group) {
    m_pStore = static_cast<IVSettingsStore*>(CSingletonManager::Instance().GetInstanceVoid(kSettingsStoreGUID));
    if (!m_pStore) return;
    m_pStore->AddRef();
    Drop(m_pStore->Prepare());
    Drop(m_pStore->OpenGroup(group, &m_pGroup));
}

CSettingsGroupAccess::~CSettingsGroupAccess() {
    if (m_pGroup) m_pGroup->Release();
    if (m_pStore) m_pStore->Release();
}

void CSettingsGroupAccess::WriteInt(int id, int value) {
    if (!m_pGroup) return;
    IVSettingsIntWriter* writer = nullptr;
    if (m_pGroup->QueryInterface(IID_IVSettingsIntWriter, reinterpret_cast<void**>(&writer)) != S_OK) writer = nullptr;
    if (!writer) return;
    Drop(writer->Write(id, value, 0));
    writer->Release();
}

void CSettingsGroupAccess::WriteText(int id, const wchar_t* value) {
    if (!m_pGroup) return;
    IVSettingsTextWriter* writer = nullptr;
    if (m_pGroup->QueryInterface(IID_IVSettingsTextWriter, reinterpret_cast<void**>(&writer)) != S_OK) writer = nullptr;
    if (!writer) return;
    Drop(writer->Write(id, value ? value : L"", 0));
    writer->Release();
}

void CSettingsGroupAccess::WriteDouble(int id, double value) {
    if (m_pGroup) Drop(m_pGroup->WriteDouble(id, value, 0));
}

bool CSettingsGroupAccess::ReadInt(int id, int& value) { return m_pGroup && m_pGroup->ReadInt(id, value); }
bool CSettingsGroupAccess::ReadText(int id, CString& value) { return m_pGroup && m_pGroup->ReadText(id, value); }
bool CSettingsGroupAccess::ReadDouble(int id, double& value) { return m_pGroup && m_pGroup->ReadDouble(id, value); }

}  // namespace colormgr
