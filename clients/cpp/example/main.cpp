#include <tollmere_launcher_client.h>

#include <iostream>

int main() try {
    launcher::SteamHelper steam = launcher::SteamHelper::Start({
        .m_Helper = "steam/tollmere_steam_helper.exe",
        .m_AppId = 480,
        .m_Directory = "game",
    });
    const launcher::SteamIdentity user = steam.Identity();
    std::cout << user.m_Name << " plays as " << user.m_SteamId << ", with a ticket of " << user.m_Ticket.size()
              << " bytes\n";

    const launcher::Game game = steam.Launch({.m_Exe = "game/game.exe", .m_Args = {"-windowed"}});
    game.Ended();
    steam.Stop();
} catch (const launcher::HelperError& error) {
    std::cout << error.Code() << ": " << error.Text() << ' ' << error.Advice() << '\n';
    return 1;
}
