@echo off
rem Shows the helper at work on a machine without Steam: a stand-in plays the Steam client. Exit status: 0 if all went
rem well, 1 if not.
setlocal
cd /d "%~dp0bin"
set SteamAppId=480
set "SteamLocation=%CD%"
set "SAMPLE_GAME_RECORD=%CD%\game.json"
set "LOG_FOLDER=%ProgramData%\Tollmere Games\Launcher"
set FAILED=
set FREE=

echo --- The log's folder, which an installer makes
if not exist "%LOG_FOLDER%\" mkdir "%LOG_FOLDER%"
echo %LOG_FOLDER%

echo --- Doctor: is everything there?
probe doctor --helper tollmere_steam_helper.exe
rem What it says about the last run is no failure of this one.
for /f "tokens=1-3" %%a in ('probe doctor --helper tollmere_steam_helper.exe') do if "%%a %%b %%c"=="pipe ok free:" set FREE=yes
if not defined FREE (
    echo try: a helper runs already. Leave its launcher and wait 20 s, or run bin\probe stop.
    exit /b 1
)

echo --- Start
start "" tollmere_steam_helper.exe
if errorlevel 1 set FAILED=%FAILED% start

echo --- Identity, and a game is launched
probe --timeout 30000 info then launch "%CD%\sample_game.exe" --dir "%CD%" --args "sample_game.exe -level 3"
if errorlevel 1 set FAILED=%FAILED% talk

echo --- What the game saw
rem It writes its record a moment after its start; each question takes that long, too.
for /l %%i in (1,1,100) do if not defined FAILED if not exist game.json probe info >nul
if not exist game.json set FAILED=%FAILED% game
if exist game.json type game.json
echo.

echo --- Stop
probe stop
if errorlevel 1 set FAILED=%FAILED% stop

echo --- Log
probe log --run 1
if errorlevel 1 set FAILED=%FAILED% log

echo --- Events
probe events
if errorlevel 1 set FAILED=%FAILED% events

if exist game.json del game.json
if defined FAILED (
    echo try: these steps failed: %FAILED%
    exit /b 1
)
echo try: ok
exit /b 0
