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
CLI::Option* AddNumber(CLI::App* command, const char* option, std::uint32_t& target) {
    return command->add_option_function<std::string>(option, [option, &target](const std::string& text) {
        target = ReadNumber<std::uint32_t>(option, text);
        if (target == 0) throw CLI::ValidationError(option, "counts from 1");
    });
}

void AddDoctor(CLI::App& app, Options& options) {
    CLI::App* const doctor = Add(app, options, "doctor", Task::Doctor);
    doctor->add_option("--helper", options.m_Helper);
    // 0, too: whether it makes sense is for the doctor to say.
    doctor->add_option_function<std::string>("--app-id", [&options](const std::string& text) {
        options.m_AppId = ReadNumber<std::uint32_t>("--app-id", text);
    });
    doctor->add_option("--dir", options.m_Directory);
    doctor->add_flag("--connect", options.m_Connect);
}

}  // namespace

void AddLocalCommands(CLI::App& app, Options& options) {
    CLI::App* const log = Add(app, options, "log", Task::ShowLog);
    CLI::Option* const run = AddNumber(log, "--run", options.m_Run);
    log->add_flag("--follow", options.m_Follow)->excludes(run);
    Add(app, options, "events", Task::ShowEvents);
    AddNumber(Add(app, options, "stop", Task::Stop), "--pid", options.m_ProcessId);
    AddDoctor(app, options);
}
