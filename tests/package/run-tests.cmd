@echo off
rem Runs the tests of this folder, a process a suite, and leaves a summary in results\summary.txt: please send that back. Nothing
rem needs to be installed. What the tests write is in the temporary directory and below HKEY_CURRENT_USER\Software (as an
rem administrator also below HKEY_LOCAL_MACHINE\Software\Classes), and goes again. One that hangs is ended by Ctrl+C; its
rem name is the last on the screen.
setlocal enableextensions
cd /d "%~dp0"
if not exist results mkdir results
set summary=results\summary.txt
set passed=0
set failed=0
set acp=0

echo tarnlib @version@> %summary%
ver >> %summary%
set system=HKLM\SYSTEM\CurrentControlSet\Control
for %%v in (ProductName CurrentBuildNumber UBR DisplayVersion) do call :tell "HKLM\SOFTWARE\Microsoft\Windows NT\CurrentVersion" %%v
for %%v in (ACP OEMCP) do call :tell %system%\Nls\CodePage %%v
call :tell %system%\FileSystem LongPathsEnabled
call :tell "HKCU\Control Panel\International" LocaleName
echo %PROCESSOR_ARCHITECTURE% %PROCESSOR_ARCHITEW6432%, temporary directory %TEMP%>> %summary%
for /f "tokens=3" %%a in ('reg query %system%\Nls\CodePage /v ACP') do set acp=%%a

for %%p in (tarn_tests tarn_seam_tests) do call :all %%p
if %acp%==932 call :run tarn_tests Cp932 "Cp932*"
set TARN_HIGH_MEMORY=1
call :run tarn_tests above-2-GiB "-Cp932*"

echo.
echo %passed% runs passed, %failed% failed
echo %passed% runs passed, %failed% failed>> %summary%
echo Please send back %cd%\%summary%
if not %failed%==0 exit /b 1
exit /b 0

:tell
reg query %1 /v %2 >> %summary% 2> nul
goto :eof

rem The suites of a program.
:all
for /f %%s in (%1.suites) do call :run %1 %%s "%%s.*:*/%%s.*:%%s/*.*:*/%%s/*.*"
goto :eof

rem A program, the name of the run, the tests.
:run
echo %1 %2
%1.exe "--gtest_filter=%~3" > results\%1-%2.txt 2>&1
if errorlevel 1 goto failure
set /a passed+=1
goto :eof

:failure
set status=%errorlevel%
set /a failed+=1
echo     FAILED
echo FAILED %1 %2, exit status %status%:>> %summary%
type results\%1-%2.txt >> %summary%
goto :eof
