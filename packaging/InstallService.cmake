# Runs at install time, when the prefix is known: the unit names the installed
# service, and the service's settings go to /etc for a /usr install (the
# packages), else under the prefix. file(INSTALL) adds DESTDIR itself.
set(prefix "${CMAKE_INSTALL_PREFIX}")
if(prefix STREQUAL "/usr")
  set(etc "/etc")
else()
  set(etc "${prefix}/etc")
endif()
set(CMAKE_INSTALL_FULL_BINDIR "${prefix}/bin")
set(QUILLOTONE_SERVICE_CONF "${etc}/quillotone-service/quillotone-service.conf")
configure_file("${QUILLOTONE_PACKAGING}/quillotone-service.service.in"
               "${QUILLOTONE_PACKAGING_BUILD}/quillotone-service.service" @ONLY)
file(INSTALL "${QUILLOTONE_PACKAGING_BUILD}/quillotone-service.service"
     DESTINATION "${prefix}/lib/systemd/system")
file(INSTALL "${QUILLOTONE_PACKAGING}/quillotone-service.conf" DESTINATION "${etc}/quillotone-service")
