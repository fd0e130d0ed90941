#pragma once

// A published telemetry source whose store file lies in a folder of the test's own.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "support/temp_folder.h"
#include "telemetry/event_store.h"
#include "telemetry/event_store_path.h"
#include "telemetry/telemetry_publication.h"
#include "tests/support/log_capture.h"

class StoreFixture : public testing::Test {
  protected:
    StoreFixture() {
        // Only the native layer listens to this; elsewhere the file is where it always is.
        SetEnvironmentVariableA("TOLLMERE_LOCAL_APP_DATA", support::ToUtf8(m_Folder.Path()).c_str());
        PublishTelemetry(hooks, source);
        WideString path;
        EXPECT_TRUE(GetEventStorePath(path));
        std::string file = WideToUtf8(path.c_str());
        // Every platform's own file functions take this separator.
        std::replace(file.begin(), file.end(), '\\', '/');
        m_File = support::FromUtf8(file);
        Remove();
    }
    ~StoreFixture() override {
        Remove();
        g_TelemetryHooks = nullptr;
        g_TelemetrySource = nullptr;
    }

    void Queue(const std::string& data, std::uint64_t time) { QueueEvent("STEAM_ACTION", data.c_str(), time); }

    // The data of what is queued.
    std::vector<std::string> Queued() const {
        std::vector<std::string> data;
        for (const TelemetryEvent& event : source.m_Events) data.emplace_back(event.data);
        return data;
    }
    static std::string Entry(const std::string& data, const std::string& time) {
        return R"({"name":"STEAM_ACTION","data":")" + data + R"(","time":)" + time + "}";
    }
    static std::string Document(const std::vector<std::string>& entries) {
        std::string text = "{\"metrics\":[";
        for (std::size_t i = 0; i < entries.size(); ++i) text += (i != 0 ? "," : "") + entries[i];
        return text + "]}";
    }
    void WriteStore(const std::string& bytes) { std::ofstream(m_File, std::ios::binary) << bytes; }
    // Nothing if there is no file.
    std::optional<std::string> ReadStore() const {
        if (!std::filesystem::exists(m_File)) return std::nullopt;
        return support::ReadAll(m_File);
    }
    const std::filesystem::path& File() const { return m_File; }
    void Remove() {
        std::error_code ignored;
        std::filesystem::remove_all(m_File, ignored);
    }

    test_support::LogCapture log;
    TelemetryHooks hooks;
    SteamHelperTelemetry source;

  private:
    support::TempFolder m_Folder;
    std::filesystem::path m_File;
};
