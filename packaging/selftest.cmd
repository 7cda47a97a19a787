@echo off
rem Runs the test programs on this machine and writes what they say to report.txt beside this file.
rem Registers the libraries of this folder for this user meanwhile. Leave keyboard and mouse alone:
rem some of the tests type. A program that hangs may be ended in the task manager; the rest goes on.
setlocal
cd /d "%~dp0"
rem A redirection stands first in its line: a digit before it would name a handle.
set report="%~dp0report.txt"
set /a passed=0
set /a failed=0
set /a number=0
if not exist output mkdir output
set system=%SystemRoot%\System32
if exist %SystemRoot%\SysWOW64\cscript.exe set system=%SystemRoot%\SysWOW64

>%report% echo KelUtils self-test
>>%report% ver
>>%report% echo %DATE% %TIME% %PROCESSOR_ARCHITECTURE% %PROCESSOR_ARCHITEW6432%
>>%report% chcp

call :run win32\hosts\kelregister\kelregister.exe win32\server\KelUtils.dll win32\bench\link\BenchLink.dll
call :run win32\hosts\kelrun\kelrun.exe --diagnose
call :run %system%\cscript.exe //nologo selftest.js
call :run win32\hosts\kelrun\kelrun.exe examples\set-clock.kel --check
call :run win32\hosts\kelrun\kelrun.exe examples\offsets.kel --port COM3 --replay tests\end_to_end\examples\offsets.trace --speed 0
for /f %%f in (tests.txt) do call :run %%f --gtest_brief=1
call :run win32\hosts\kelregister\kelregister.exe --unregister win32\server\KelUtils.dll win32\bench\link\BenchLink.dll

>>%report% echo.
>>%report% echo %passed% programs passed, %failed% failed
echo %passed% programs passed, %failed% failed: see report.txt
if %failed% gtr 0 exit /b 1
exit /b 0

:run
echo %*
set /a number+=1
rem Each program has a file of its own, which another process may hold a while longer.
set output="%~dp0output\%number%.txt"
rem What does not even start has failed.
cmd /c exit 99
%* >%output% 2>&1 <nul
set code=%errorlevel%
>>%report% echo.
>>%report% echo ---- %*
type %output% >>%report%
>>%report% echo ---- exit code %code%
if %code%==0 (set /a passed+=1) else (set /a failed+=1)
exit /b 0
