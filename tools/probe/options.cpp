#include "tools/probe/options.h"

#include <algorithm>
#include <charconv>
#include <CLI/CLI.hpp>
#include <optional>

#include "clients/cpp/tollmere_launcher_client.h"
#include "tools/probe/local_commands.h"
#include "tools/probe/read_number.h"

namespace {

// Parts of the command line with this word between them share one connection.
constexpr char kThen[] = "then";

using Arguments = std::vector<std::string>;

std::vector<Arguments> SplitAtThen(const Arguments& arguments) {
    std::vector<Arguments> parts(1);
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        if (arguments[i] == kThen) {
            parts.emplace_back();
        } else {
            parts.back().push_back(arguments[i]);
        }
    }
    return parts;
}

// Pairs of hexadecimal digits, with blanks anywhere.
std::optional<std::string> FromHex(std::string text) {
    std::erase(text, ' ');
    if (text.empty() || text.size() % 2 != 0) return std::nullopt;
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        unsigned value = 0;
        const char* const end = text.data() + i + 2;
        if (std::from_chars(end - 2, end, value, 16).ptr != end) return std::nullopt;
        bytes += static_cast<char>(value);
    }
    return bytes;
}

// One part of the command line, between two `then`.
class PartParser {
  public:
    // `number` counts the parts from 1 and is the request id unless one is given.
    PartParser(Options& options, std::uint64_t number) : m_Options(options), m_Id(number) {
        m_App.require_subcommand(1, 1);
        m_App.fallthrough();
        m_App.allow_windows_style_options(false);
        m_App.add_option("--pipe", m_Options.m_Pipe);
        m_App.add_option_function<std::string>("--timeout", [this](const std::string& text) {
            m_Options.m_Timeout = std::chrono::milliseconds(ReadNumber<std::uint32_t>("--timeout", text));
            m_Options.m_HasTimeout = true;
        });
        m_App.add_option_function<std::string>(
            "--id", [this](const std::string& text) { m_Id = ReadNumber<std::uint64_t>("--id", text); });
        m_App.add_flag("--json", m_Options.m_Json);
        m_App.add_flag("-v,--verbose", m_Options.m_Verbose);
        m_App.set_version_flag("--version");

        m_Info = m_App.add_subcommand("info");
        m_Launch = m_App.add_subcommand("launch");
        m_Launch->add_option("EXE", m_Executable)->required();
        m_Launch->add_option("--dir", m_Directory);
        m_Launch->add_option("--args", m_GameArguments);
        m_Raw = m_App.add_subcommand("raw");
        m_Raw->add_option("HEX", m_Hex)->required();
        m_Raw->add_option_function<std::string>(
            "--answers", [this](const std::string& text) { m_Answers = ReadNumber<unsigned>("--answers", text); });
        for (CLI::App* const subcommand : {m_Info, m_Launch, m_Raw}) {
            subcommand->allow_windows_style_options(false);
        }
        AddLocalCommands(m_App, m_Options);
    }

    // Throws CLI::Error.
    void Parse(Arguments part) {
        std::reverse(part.begin(), part.end());  // as the library wants it
        m_App.parse(std::move(part));
        if (m_Options.m_Task == Task::Converse) m_Options.m_Commands.push_back(MakeCommand());
    }

  private:
    Command MakeCommand() const {
        Command command;
        command.m_RequestId = m_Id;
        if (m_Raw->parsed()) {
            const std::optional<std::string> bytes = FromHex(m_Hex);
            if (!bytes) throw CLI::ValidationError("HEX", "not pairs of hexadecimal digits");
            command.m_Bytes = *bytes;
            command.m_Text = std::to_string(bytes->size()) + " raw bytes";
            command.m_Answers = m_Answers;
            command.m_IsRaw = true;
        } else {
            command.m_Text = m_Info->parsed()
                                 ? launcher::InfoRequest(m_Id)
                                 : launcher::LaunchRequest(m_Id, m_Executable, Directory(), m_GameArguments);
            command.m_Bytes = launcher::MakeFrame(command.m_Text);
        }
        return command;
    }

    // By default the executable's.
    std::string Directory() const {
        if (m_Launch->get_option("--dir")->count() > 0) return m_Directory;
        const std::size_t separator = m_Executable.find_last_of("/\\");
        return separator == std::string::npos ? "." : m_Executable.substr(0, separator + 1);
    }

    Options& m_Options;
    std::uint64_t m_Id;
    std::string m_Executable;
    std::string m_Directory;
    std::string m_GameArguments;
    std::string m_Hex;
    unsigned m_Answers = 1;

    CLI::App m_App{"", "probe"};
    CLI::App* m_Info = nullptr;
    CLI::App* m_Launch = nullptr;
    CLI::App* m_Raw = nullptr;
};

}  // namespace

bool ParseOptions(const std::vector<std::string>& arguments, Options& options, std::string& error) {
    try {
        std::uint64_t number = 0;
        for (const Arguments& part : SplitAtThen(arguments)) PartParser(options, ++number).Parse(part);
        if (options.m_Task != Task::Converse && number > 1) {
            throw CLI::ValidationError(kThen, "stands between commands that go over the pipe");
        }
        return true;
    } catch (const CLI::CallForHelp&) {
        options.m_Help = true;
        return true;
    } catch (const CLI::CallForVersion&) {
        options.m_Version = true;
        return true;
    } catch (const CLI::Error& reason) {
        error = reason.what();
        return false;
    }
}
