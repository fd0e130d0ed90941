#pragma once

// The command line options. Each is a global that registers itself before the entry runs. ProcessCommandLine sets them
// on the main thread, before the worker exists; afterwards they are read-only and any thread may read them.
//
// The whole command line is lower-cased before it is split, values included, and an option is found anywhere inside an
// argument. Its value is what follows the one character behind the name, or else the next argument.

#include <cstdint>
#include <string>
#include <vector>

#include "diagnostics/text.h"

// The abstract base. Options are globals and never deleted through it.
class GlobalConfig {
  public:
    // Walks the arguments for this one option, logging each occurrence. The last one wins.
    void ParseArguments(int argc, const WCHAR* const* argv);

    WideString m_Name;  // with its leading "-", in lower case
    bool m_WasSet = false;

    // Whether the next argument may hold the value.
    virtual bool TakesValue() const = 0;

    // Called once for each occurrence.
    virtual void SetValue(const WideString& text) = 0;

  protected:
    // Registers the object, which must live as long as the process.
    explicit GlobalConfig(const WCHAR* name);
    ~GlobalConfig() = default;
};

class GlobalBool final : public GlobalConfig {
  public:
    explicit GlobalBool(const WCHAR* name) : GlobalConfig(name) {}
    bool TakesValue() const override { return false; }
    void SetValue(const WideString&) override { m_Value = true; }

    bool m_Value = false;
};

// A decimal number at the start of the text. Without one, or with one that doesn't fit, the option counts as not given.
class GlobalInt final : public GlobalConfig {
  public:
    explicit GlobalInt(const WCHAR* name) : GlobalConfig(name) {}
    bool TakesValue() const override { return true; }
    void SetValue(const WideString& text) override;

    std::int32_t m_Value = 0;
};

class GlobalString final : public GlobalConfig {
  public:
    explicit GlobalString(const WCHAR* name) : GlobalConfig(name) {}
    bool TakesValue() const override { return true; }
    void SetValue(const WideString& text) override { m_Value = WideToUtf8(text.c_str()); }

    std::string m_Value;  // UTF-8
};

// All options, in the order of their construction; not owned.
std::vector<GlobalConfig*>& GlobalConfigRegistry();

// Sets the options in `registry` from `lpCmdLine`, the command line without the program's own name; null does nothing.
void ProcessCommandLine(const std::vector<GlobalConfig*>& registry, const WCHAR* lpCmdLine);

extern GlobalBool g_SteamTestTelemetry;  // recognised and logged, nothing more
extern GlobalInt g_SteamAppID;           // wins over the environment, even with 0
extern GlobalString g_SteamLocation;     // the game directory; wins over the environment
