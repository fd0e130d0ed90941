#include "tools/probe/local_commands.h"

#include "tools/probe/read_number.h"

namespace {

CLI::App* Add(CLI::App& app, Options& options, const char* name, Task task) {
    CLI::App* const command = app.add_subcommand(name);
    command->allow_windows_style_options(false);
    command->callback([&options, task] { options.m_Task = task; });
    return command;
}

// Of what is counted from 1.
void AddNumber(CLI::App* command, const char* option, std::uint32_t& target) {
    command->add_option_function<std::string>(option, [option, &target](const std::string& text) {
        target = ReadNumber<std::uint32_t>(option, text);
        if (target == 0) throw CLI::ValidationError(option, "counts from 1");
    });
}

}  // namespace

void AddLocalCommands(CLI::App& app, Options& options) {
    AddNumber(Add(app, options, "log", Task::ShowLog), "--run", options.m_Run);
    Add(app, options, "events", Task::ShowEvents);
    AddNumber(Add(app, options, "stop", Task::Stop), "--pid", options.m_ProcessId);
}
