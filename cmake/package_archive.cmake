# Packs each archive again, so that the same files give the same bytes: sorted, with one date, one mode, and without the
# further times and the user that the first packing put in.
set(date 315532800) # 1980, the first that an archive can hold
if(DEFINED ENV{SOURCE_DATE_EPOCH})
  set(date "$ENV{SOURCE_DATE_EPOCH}")
endif()
set(ENV{TZ} UTC) # the date in an archive is a local one
set(ENV{LC_ALL} C)
foreach(archive IN LISTS CPACK_PACKAGE_FILES)
  set(folder "${archive}.unpacked")
  file(REMOVE_RECURSE "${folder}")
  file(ARCHIVE_EXTRACT INPUT "${archive}" DESTINATION "${folder}")
  file(REMOVE "${archive}")
  execute_process(
    COMMAND sh -c "find . -type f -exec chmod 644 {} + -exec touch -d @${date} {} + && find . -type f | sort | zip -q -X -D '${archive}' -@"
    WORKING_DIRECTORY "${folder}"
    COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE "${folder}")
endforeach()
