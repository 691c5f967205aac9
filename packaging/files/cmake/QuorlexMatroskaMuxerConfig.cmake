# find_package(QuorlexMatroskaMuxer): the target QuorlexMatroskaMuxer::interface, with the public header and the system's
# libraries that an application around the filter links; and where the files of the package lie:
#
#     QuorlexMatroskaMuxer_MODULE        QRX_MKVMuxer.ax, to be loaded, registered or shipped
#     QuorlexMatroskaMuxer_TYPE_LIBRARY  qrx_mkvmuxer.tlb
get_filename_component(_qrx_root "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)
set(QuorlexMatroskaMuxer_MODULE "${_qrx_root}/bin/QRX_MKVMuxer.ax")
set(QuorlexMatroskaMuxer_TYPE_LIBRARY "${_qrx_root}/idl/qrx_mkvmuxer.tlb")
if(NOT TARGET QuorlexMatroskaMuxer::interface)
  add_library(QuorlexMatroskaMuxer::interface INTERFACE IMPORTED)
  set_target_properties(QuorlexMatroskaMuxer::interface PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES "${_qrx_root}/include"
    INTERFACE_COMPILE_FEATURES cxx_std_17
    INTERFACE_COMPILE_DEFINITIONS NO_DSHOW_STRSAFE
    INTERFACE_LINK_LIBRARIES "strmiids;ole32;oleaut32;uuid")
endif()
unset(_qrx_root)
