# `cmake --build --preset windows --target package` makes two archives: what ships, and its debug symbols, as PDBs. With the
# same inputs they are the same to the byte; SOURCE_DATE_EPOCH, in seconds since 1970, is the date of the files in them.

install(TARGETS tollmere_steam_helper probe RUNTIME DESTINATION . COMPONENT program)
install(FILES README.md packaging/NOTICES.txt DESTINATION . COMPONENT program)
install(DIRECTORY docs DESTINATION . COMPONENT program)
install(FILES
  "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/tollmere_steam_helper.pdb"
  "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/probe.pdb"
  DESTINATION . COMPONENT symbols)

set(CPACK_GENERATOR ZIP)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL program symbols)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_ARCHIVE_PROGRAM_FILE_NAME "tollmere-steam-helper-${PROJECT_VERSION}-win64")
set(CPACK_ARCHIVE_SYMBOLS_FILE_NAME "tollmere-steam-helper-${PROJECT_VERSION}-win64-symbols")
set(CPACK_POST_BUILD_SCRIPTS "${CMAKE_SOURCE_DIR}/cmake/package_archive.cmake")
include(CPack)
