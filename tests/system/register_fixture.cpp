#include "system/register_fixture.h"

#include "virtual_register/memory_file.h"

namespace test {

HostEvents& HostEvents::Get() {
    static HostEvents events;
    return events;
}

RegisterTest::RegisterTest() {
    HostEvents::Get() = {};
    library.EventErrorProc = [](int code, char*) {
        HostEvents::Get().heard.push_back("error " + std::to_string(code));
    };
    library.EventQuery = [] {
        HostEvents::Get().heard.push_back("query");
        if (HostEvents::Get().at_query) {
            HostEvents::Get().at_query();
        }
    };
    library.EventCheckPrepare = [](unsigned char step) {
        HostEvents::Get().heard.push_back("prepare " + std::to_string(step));
    };
    library.EventCloseCheck = [] { HostEvents::Get().heard.push_back("close"); };
}

void RegisterTest::Start(int firmware, const std::vector<std::string>& more) {
    Texts options{"--firmware", std::to_string(firmware), "--memory", folder.Path(kMemoryFile),
                  "--paper",    folder.Path("paper.txt"), "--log",    folder.Path("register.log")};
    options.insert(options.end(), more.begin(), more.end());
    kkm.emplace(options);
}

void RegisterTest::Connect() {
    ASSERT_EQ(library.ConnectKKMDevice(Text(kkm->Tty()).data()), 1) << library.GetErrorCode();
}

bool RegisterTest::Add(const std::string& cp866_name, double price, double quantity, int section) {
    return library.cbAddSale(Text(cp866_name).data(), price, quantity, section) == 1;
}

int RegisterTest::Print(const std::string& asking) {
    kkm->Say(asking);
    if (library.CheckClose() == 1) {
        library.PrintCheck();
    }
    return library.GetErrorCode();
}

virtual_register::Memory RegisterTest::Memory() const {
    return virtual_register::load_memory(folder.Path(kMemoryFile));
}

virtual_register::PrintedCheck RegisterTest::LastCheck() const {
    const auto check = Memory().last_check;
    EXPECT_TRUE(check.has_value()) << "no check was registered";
    return check.value_or(virtual_register::PrintedCheck());
}

std::string RegisterTest::Paper() {
    EXPECT_EQ(kkm->Stop(), 0);
    return folder.Read("paper.txt");
}

}  // namespace test
