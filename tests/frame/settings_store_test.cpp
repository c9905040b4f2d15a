// The file-backed settings store: persistence, atomic replacement, and
// concurrent writers from several processes.
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "host/SettingsStore.h"
#include "support/temp_env.h"

namespace {

struct Group {
    explicit Group(IVSettingsStore* store, int id) { EXPECT_EQ(store->OpenGroup(id, &group), nullptr); }
    ~Group() {
        if (group) group->Release();
    }
    IVSettingsGroup* group = nullptr;
};

template <typename Writer>
Writer* QueryWriter(IVSettingsGroup* group, const GUID& iid) {
    void* out = nullptr;
    EXPECT_EQ(group->QueryInterface(iid, &out), S_OK);
    return static_cast<Writer*>(out);
}

void WriteInt(IVSettingsStore* store, int group, int id, int value) {
    Group g(store, group);
    auto* writer = QueryWriter<IVSettingsIntWriter>(g.group, IID_IVSettingsIntWriter);
    EXPECT_EQ(writer->Write(id, value, 0), nullptr);
    writer->Release();
}

}  // namespace

class SettingsStore : public tesk::test::IsolatedTest {};

TEST_F(SettingsStore, ValuesOfEveryKindSurviveANewStore) {
    IVSettingsStore* store = CreateFileSettingsStore();
    {
        Group g(store, 169);
        auto* texts = QueryWriter<IVSettingsTextWriter>(g.group, IID_IVSettingsTextWriter);
        EXPECT_EQ(texts->Write(175, L"Adobe RGB (1998) \u00e9.icc", 0), nullptr);
        texts->Release();
        EXPECT_EQ(g.group->WriteDouble(181, 2.2, 0), nullptr);
    }
    WriteInt(store, 169, 170, 2);
    store->Release();

    IVSettingsStore* fresh = CreateFileSettingsStore();
    EXPECT_EQ(fresh->Prepare(), nullptr);
    Group g(fresh, 169);
    int mode = 0;
    EXPECT_TRUE(g.group->ReadInt(170, mode));
    EXPECT_EQ(mode, 2);
    CString text;
    EXPECT_TRUE(g.group->ReadText(175, text));
    EXPECT_EQ(text, L"Adobe RGB (1998) \u00e9.icc");
    double gamma = 0;
    EXPECT_TRUE(g.group->ReadDouble(181, gamma));
    EXPECT_EQ(gamma, 2.2);
    // A value is read only as the kind it was written as.
    EXPECT_FALSE(g.group->ReadText(170, text));
    Group other(fresh, 0);
    EXPECT_FALSE(other.group->ReadInt(170, mode));
    fresh->Release();
}

TEST_F(SettingsStore, DamagedFileStartsEmptyAndIsReplacedWhole) {
    std::filesystem::create_directories(env_.ConfigDir() + "/teskcolor");
    std::ofstream(SettingsFilePath()) << "{ \"169/170\": {\"int\": 1 ";  // cut off mid-write by another program
    IVSettingsStore* store = CreateFileSettingsStore();
    Group g(store, 169);
    int value = 0;
    EXPECT_FALSE(g.group->ReadInt(170, value));
    WriteInt(store, 169, 177, 3);
    store->Release();
    std::ifstream in(SettingsFilePath());
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_NE(text.find("\"intent\""), std::string::npos);
    // No temporary files stay behind.
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(env_.ConfigDir() + "/teskcolor"))
        files += entry.path().filename().string().rfind("settings.json.", 0) == 0 &&
                 entry.path().extension() != ".lock";
    EXPECT_EQ(files, 0);
}

TEST_F(SettingsStore, ConcurrentWritersInSeveralProcessesLoseNothing) {
    constexpr int kProcesses = 4, kValues = 25;
    std::vector<pid_t> children;
    for (int p = 0; p < kProcesses; ++p) {
        pid_t child = fork();
        if (child == 0) {
            IVSettingsStore* store = CreateFileSettingsStore();
            for (int i = 0; i < kValues; ++i) WriteInt(store, 500 + p, i, p * 1000 + i);
            store->Release();
            _exit(0);
        }
        children.push_back(child);
    }
    for (pid_t child : children) {
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    IVSettingsStore* store = CreateFileSettingsStore();
    for (int p = 0; p < kProcesses; ++p) {
        Group g(store, 500 + p);
        for (int i = 0; i < kValues; ++i) {
            int value = -1;
            EXPECT_TRUE(g.group->ReadInt(i, value)) << p << "/" << i;
            EXPECT_EQ(value, p * 1000 + i);
        }
    }
    store->Release();
}

TEST_F(SettingsStore, ServiceIsRegisteredOnce) {
    IVSettingsStore* first = RegisterSettingsStoreService();
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(RegisterSettingsStoreService(), first);
}
