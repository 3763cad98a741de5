#include "control_client.h"

#include "control_channel.h"

namespace Tarvo::Emu {

int ControlRequest(const std::string& socketPath, const std::string& request, const std::vector<std::string>& lines,
                   std::ostream& out, std::ostream& err)
{
    std::string error;
    std::optional<int> fd = ControlChannel::Connect(socketPath, &error);
    if (!fd) {
        err << "zel_device: " << error << '\n';
        return 1;
    }
    ControlChannel channel(*fd);
    bool sent = channel.WriteLine(request);
    for (const std::string& line : lines) {
        sent = sent && channel.WriteLine(line);
    }
    channel.FinishWriting();
    if (!sent) {
        err << "zel_device: the device closed the connection\n";
        return 1;
    }
    while (std::optional<std::string> answer = channel.ReadLine()) {
        if (answer->rfind("exit ", 0) == 0) {
            return std::atoi(answer->c_str() + 5);
        }
        std::ostream& stream = answer->rfind("2 ", 0) == 0 ? err : out;
        stream << (answer->size() >= 2 ? answer->substr(2) : std::string()) << '\n';
        stream.flush();
    }
    err << "zel_device: the device stopped before answering\n";
    return 1;
}

}  // namespace Tarvo::Emu
