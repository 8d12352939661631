# Run by cpack when everything lies in a folder of its own, before it becomes a package.

# Without this program the package would name no dependencies, and cpack would not mind.
find_program(finds_dependencies dpkg-shlibdeps)
if(NOT finds_dependencies)
  message(FATAL_ERROR "dpkg-shlibdeps is missing (Debian package dpkg-dev)")
endif()
# Everybody reads the folders, whatever the umask of who makes the package.
file(CHMOD_RECURSE ${CPACK_TEMPORARY_INSTALL_DIRECTORY} DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
