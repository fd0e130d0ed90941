@rem Runs the tests of this folder: verify.cmd [PART...], with a part of a test's name only those that have it.
@rem Leaves results.json here. Exit status: 0 if all passed, 1 if not.
@"%~dp0bin\verify_kit.exe" %*
@exit /b %ERRORLEVEL%
