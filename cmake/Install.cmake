# Install layout and Debian packages, as Debian installs its Java and JNI libraries:
# the jar in share/java, the bridge in lib/<multiarch>/jni (where Debian's OpenJDK looks by
# default), the stand-in device SDK in lib/<multiarch> where the loader finds it.
# Two packages per architecture: the bridge, and the stand-in that a real SDK replaces.

include(GNUInstallDirs)
set(QUORIN_DEB_BRIDGE libquorinctrlwrapper-java)
set(QUORIN_DEB_STANDIN libquorinctrl-virtual)
# What every provider of libQuorinCtrl.so provides; the device maker's package can provide it too.
set(QUORIN_DEB_SDK libquorinctrl-sdk)
# The multiarch folder under any prefix, not only /usr (where GNUInstallDirs alone picks it), so a
# staged install looks like the system; GoogleTest has already set CMAKE_INSTALL_LIBDIR otherwise.
set(QUORIN_INSTALL_LIBDIR ${CMAKE_INSTALL_LIBDIR})
if(CMAKE_LIBRARY_ARCHITECTURE)
  set(QUORIN_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE})
endif()
set(QUORIN_INSTALL_DOCDIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/${QUORIN_DEB_BRIDGE})

# ---- Javadoc ----
find_program(JAVADOC_EXECUTABLE javadoc REQUIRED)
set(QUORIN_JAVADOC_DIR ${CMAKE_BINARY_DIR}/javadoc)
add_custom_command(
  OUTPUT ${QUORIN_JAVADOC_DIR}/index.html
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${QUORIN_JAVADOC_DIR}
  COMMAND ${JAVADOC_EXECUTABLE} -quiet -Xdoclint:all -Werror --release 17
          -encoding UTF-8 -docencoding UTF-8 -charset UTF-8
          -windowtitle "QuorinCtrlWrapper ${PROJECT_VERSION}"
          -doctitle "QuorinCtrlWrapper ${PROJECT_VERSION}: Java API of the code-reader bridge"
          -d ${QUORIN_JAVADOC_DIR} ${QUORIN_API_SOURCES}
  DEPENDS ${QUORIN_API_SOURCES}
  COMMENT "Building the javadoc of the Java API")
add_custom_target(quorin_javadoc ALL DEPENDS ${QUORIN_JAVADOC_DIR}/index.html)

# ---- cmake --install ----
set(QUORIN_JAR_NAME QuorinCtrlWrapper-${PROJECT_VERSION}.jar)
set(QUORIN_STAGE_DIR ${CMAKE_BINARY_DIR}/install-stage)
file(MAKE_DIRECTORY ${QUORIN_STAGE_DIR})
# Debian's unversioned name points at the versioned jar.
file(CREATE_LINK ${QUORIN_JAR_NAME} ${QUORIN_STAGE_DIR}/QuorinCtrlWrapper.jar SYMBOLIC)
install(FILES ${QUORIN_API_JAR} DESTINATION ${CMAKE_INSTALL_DATADIR}/java
        RENAME ${QUORIN_JAR_NAME} COMPONENT bridge)
install(FILES ${QUORIN_STAGE_DIR}/QuorinCtrlWrapper.jar DESTINATION ${CMAKE_INSTALL_DATADIR}/java
        COMPONENT bridge)
install(TARGETS QuorinCtrlWrapper LIBRARY DESTINATION ${QUORIN_INSTALL_LIBDIR}/jni COMPONENT bridge)
install(TARGETS QuorinCtrl LIBRARY DESTINATION ${QUORIN_INSTALL_LIBDIR} COMPONENT standin)
install(FILES ${PROJECT_SOURCE_DIR}/docs/user-guide.md DESTINATION ${QUORIN_INSTALL_DOCDIR} COMPONENT bridge)
install(FILES ${PROJECT_SOURCE_DIR}/examples/Demo.java ${PROJECT_SOURCE_DIR}/examples/FileTransfer.java
              ${PROJECT_SOURCE_DIR}/examples/FirmwareUpgrade.java
        DESTINATION ${QUORIN_INSTALL_DOCDIR}/examples COMPONENT bridge)
install(DIRECTORY ${QUORIN_JAVADOC_DIR}/ DESTINATION ${QUORIN_INSTALL_DOCDIR}/api COMPONENT bridge)

# Each package's copyright and changelog, as Debian policy asks of every binary package.
foreach(component bridge standin)
  set(QUORIN_DEB_PACKAGE ${QUORIN_DEB_BRIDGE})
  if(component STREQUAL "standin")
    set(QUORIN_DEB_PACKAGE ${QUORIN_DEB_STANDIN})
  endif()
  set(dir ${QUORIN_STAGE_DIR}/${QUORIN_DEB_PACKAGE})
  configure_file(${PROJECT_SOURCE_DIR}/packaging/debian/changelog.in ${dir}/changelog @ONLY)
  execute_process(COMMAND gzip -9nf ${dir}/changelog COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/debian/copyright ${dir}/changelog.gz
          DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${QUORIN_DEB_PACKAGE} COMPONENT ${component})
endforeach()

# ---- Debian packages (cpack -G DEB, or scripts/package.sh for both architectures) ----
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quorinctrlwrapper)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "libQuorinCtrlWrapper maintainers <maintainers@users.noreply.c-seed-30691716.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL bridge standin)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
if(CMAKE_LIBRARY_ARCHITECTURE STREQUAL "i386-linux-gnu")
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
elseif(CMAKE_LIBRARY_ARCHITECTURE STREQUAL "x86_64-linux-gnu")
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE amd64)
endif()

set(CPACK_DEBIAN_BRIDGE_PACKAGE_NAME ${QUORIN_DEB_BRIDGE})
set(CPACK_DEBIAN_BRIDGE_PACKAGE_SECTION java)
set(CPACK_COMPONENT_BRIDGE_DESCRIPTION "Java bridge to Quorin code-reader cameras
QuorinCtrlWrapper.jar and its JNI library libQuorinCtrlWrapper.so let Java
programs find, open and configure Quorin code readers (barcode and 2-D
readers, multi-channel and parcel waybill readers), poll decoded frames or
receive them through callbacks, through the device SDK libQuorinCtrl.so.
The package holds the jar, the JNI library, the user guide, the examples and
the javadoc.")
set(CPACK_DEBIAN_BRIDGE_PACKAGE_DEPENDS "${QUORIN_DEB_SDK}, default-jre-headless (>= 2:1.17) | java17-runtime-headless")

set(CPACK_DEBIAN_STANDIN_PACKAGE_NAME ${QUORIN_DEB_STANDIN})
set(CPACK_DEBIAN_STANDIN_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_STANDIN_DESCRIPTION "virtual Quorin code readers behind the device SDK's interface
A stand-in libQuorinCtrl.so with the device SDK's file name, SONAME, functions
and records, serving four virtual code readers that produce frames with
decoded codes. It lets Java programs using libquorinctrlwrapper-java run and
be tested without hardware. On a production station install the device
maker's SDK instead: both provide ${QUORIN_DEB_SDK} and conflict.")
set(CPACK_DEBIAN_STANDIN_PACKAGE_PROVIDES ${QUORIN_DEB_SDK})
set(CPACK_DEBIAN_STANDIN_PACKAGE_CONFLICTS ${QUORIN_DEB_SDK})
set(CPACK_DEBIAN_STANDIN_PACKAGE_REPLACES ${QUORIN_DEB_SDK})
set(CPACK_DEBIAN_STANDIN_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/triggers)

# Dependencies come from the built binaries. libQuorinCtrl.so is found in the build tree, which
# carries no dependency information for it: the bridge depends on ${QUORIN_DEB_SDK} instead.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
# A foreign architecture's libraries are not installed here. QUORIN_DEB_DEPENDS_ROOT holds its
# dependencies unpacked one package a folder with their DEBIAN control files (scripts/package.sh
# makes it); dpkg-shlibdeps reads each one's own symbols file there.
set(QUORIN_DEB_DEPENDS_ROOT "" CACHE PATH "Unpacked packages of the target architecture for dpkg-shlibdeps")
if(QUORIN_DEB_DEPENDS_ROOT)
  file(GLOB _dep_packages LIST_DIRECTORIES true ${QUORIN_DEB_DEPENDS_ROOT}/*)
  foreach(pkg ${_dep_packages})
    foreach(sub lib/${CMAKE_LIBRARY_ARCHITECTURE} usr/lib/${CMAKE_LIBRARY_ARCHITECTURE})
      if(IS_DIRECTORY ${pkg}/${sub})
        list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${pkg}/${sub})
      endif()
    endforeach()
  endforeach()
elseif(CMAKE_CROSSCOMPILING)
  message(STATUS "Debian packages: no QUORIN_DEB_DEPENDS_ROOT, so no dependencies from the binaries")
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS OFF)
endif()
# dpkg-shlibdeps reads the target architecture from the environment of cpack.
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_BINARY_DIR}/CPackProjectConfig.cmake)
file(WRITE ${CPACK_PROJECT_CONFIG_FILE} "set(ENV{DEB_HOST_ARCH} \"${CPACK_DEBIAN_PACKAGE_ARCHITECTURE}\")\n")
include(CPack)
