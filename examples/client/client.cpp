// A client of the installed package: the manager's proxy over no remote answers with its fall-back.
#include <zel_manager/zel_manager_proxy.h>

#include <cstdio>

int main()
{
    using namespace Tarvo::Vantel;
    Tarvo::sptr<IZelManager> manager = new ZelManagerProxy(nullptr);
    const std::u16string& descriptor = IZelManager::GetDescriptor();
    std::printf("%s %u\n", std::string(descriptor.begin(), descriptor.end()).c_str(),
                manager->SetGameFpsForThermalControl("com.example.racer", 60));
    return 0;
}
