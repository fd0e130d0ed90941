# `cmake --build --preset windows --target package` makes three archives: what ships, its debug symbols, as PDBs, and the
# kit for those who write a launcher. With the same inputs they are the same to the byte; SOURCE_DATE_EPOCH, in seconds
# since 1970, is the date of the files in them.

# The licence of our own code is the owner's to choose: it is packed where there is one.
file(GLOB licence CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/LICENSE")
set(TOLLMERE_NOTICES "${CMAKE_SOURCE_DIR}/packaging/NOTICES.txt" ${licence})

install(TARGETS tollmere_steam_helper probe RUNTIME DESTINATION . COMPONENT program)
install(FILES packaging/program.md RENAME README.md DESTINATION . COMPONENT program)
install(FILES CHANGELOG.md ${TOLLMERE_NOTICES} DESTINATION . COMPONENT program)
install(FILES docs/integration.md docs/operations.md docs/protocol.md docs/security.md DESTINATION docs COMPONENT program)

install(FILES
  "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/tollmere_steam_helper.pdb"
  "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/probe.pdb"
  DESTINATION . COMPONENT symbols)
install(FILES packaging/symbols.md RENAME README.md DESTINATION . COMPONENT symbols)
install(FILES ${TOLLMERE_NOTICES} DESTINATION . COMPONENT symbols)

install(TARGETS tollmere_steam_helper probe sample_game steam_stand_in
  RUNTIME DESTINATION bin COMPONENT devkit
  LIBRARY DESTINATION bin COMPONENT devkit)
install(FILES packaging/devkit/README.md packaging/devkit/try.cmd CHANGELOG.md ${TOLLMERE_NOTICES} DESTINATION . COMPONENT devkit)
install(DIRECTORY clients DESTINATION . COMPONENT devkit PATTERN clients/CMakeLists.txt EXCLUDE)
install(FILES docs/integration.md docs/protocol.md docs/operations.md docs/security.md
  DESTINATION docs COMPONENT devkit)

set(CPACK_GENERATOR ZIP)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL program symbols devkit)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_ARCHIVE_PROGRAM_FILE_NAME "tollmere-steam-helper-${PROJECT_VERSION}-win64")
set(CPACK_ARCHIVE_SYMBOLS_FILE_NAME "tollmere-steam-helper-${PROJECT_VERSION}-win64-symbols")
set(CPACK_ARCHIVE_DEVKIT_FILE_NAME "tollmere-steam-helper-${PROJECT_VERSION}-devkit")
set(CPACK_POST_BUILD_SCRIPTS "${CMAKE_SOURCE_DIR}/cmake/package_archive.cmake")
include(CPack)
