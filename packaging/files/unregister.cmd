@echo off
rem Takes back what register.cmd did; to be run before the folder is moved or deleted.
regsvr32 /s /u "%~dp0bin\QRX_MKVMuxer.ax"
if errorlevel 1 (
  echo QRX_MKVMuxer.ax could not be unregistered. Run this as an administrator. 1>&2
  exit /b 1
)
echo QRX_MKVMuxer.ax is no longer registered.
