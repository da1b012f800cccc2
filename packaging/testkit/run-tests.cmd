@echo off
rem Runs the tests of VarnelQELRoots on this machine; README.txt tells more.
rem Started with any argument, it does not wait for a key at the end.
setlocal
"%~dp0bin\testkit.exe"
set result=%errorlevel%
echo.
echo This summary is in "%~dp0results\summary.txt".
if "%~1"=="" pause
exit /b %result%
