@echo off
rem Registers the filter for all users; needs the rights of an administrator. The module stays where it lies.
regsvr32 /s "%~dp0bin\QRX_MKVMuxer.ax"
if errorlevel 1 (
  echo QRX_MKVMuxer.ax could not be registered. Run this as an administrator. 1>&2
  exit /b 1
)
echo QRX_MKVMuxer.ax is registered.
