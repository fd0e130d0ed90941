# Gives the files of a package their one date, before they are packed.
set(date 315532800) # 1980, the first that an archive can hold
if(DEFINED ENV{SOURCE_DATE_EPOCH})
  set(date "$ENV{SOURCE_DATE_EPOCH}")
endif()
execute_process(
  COMMAND find "${CPACK_TEMPORARY_DIRECTORY}" -exec touch --no-dereference --date "@${date}" {} +
  COMMAND_ERROR_IS_FATAL ANY)
