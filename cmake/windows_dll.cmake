# The Windows DLL, Codec.Vantaro.x64.dll: the same objects as the native
# library over the Windows platform layer, with the export list of the
# module-definition file and no MinGW runtime DLLs (the toolchain links
# statically).
set_target_properties(vantaro PROPERTIES OUTPUT_NAME "Codec.Vantaro.x64" PREFIX ""
                                         IMPORT_PREFIX "" IMPORT_SUFFIX ".lib")
target_sources(vantaro PRIVATE ${PROJECT_SOURCE_DIR}/src/platform/windows/Codec.Vantaro.x64.def)
set(VANTARO_WINDOWS_LIBS ole32 winmm user32 advapi32)
target_link_libraries(vantaro PRIVATE ${VANTARO_WINDOWS_LIBS})
target_link_libraries(vantaro_static PUBLIC ${VANTARO_WINDOWS_LIBS})

if(VANTARO_BUILD_TESTS)
  add_subdirectory(tests/windows)
endif()
