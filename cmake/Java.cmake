# The 64-bit JDK compiles the Java API and provides jni.h for both targets:
# jni_md.h picks jlong's type from _LP64, so the same headers serve -m32.
find_program(JAVAC_EXECUTABLE javac REQUIRED)
find_program(JAR_EXECUTABLE jar REQUIRED)
get_filename_component(_javac_real "${JAVAC_EXECUTABLE}" REALPATH)
get_filename_component(QUORIN_JDK_HOME "${_javac_real}/../.." ABSOLUTE)
set(QUORIN_JNI_INCLUDE_DIRS "${QUORIN_JDK_HOME}/include" "${QUORIN_JDK_HOME}/include/linux")

set(QUORIN_API_SOURCES
  ${PROJECT_SOURCE_DIR}/java/QuorinCtrlWrapper/QuorinCtrl.java
  ${PROJECT_SOURCE_DIR}/java/QuorinCtrlWrapper/QuorinCtrlDefine.java
  ${PROJECT_SOURCE_DIR}/java/QuorinCtrlWrapper/ParameterException.java)
set(QUORIN_API_JAR ${CMAKE_BINARY_DIR}/java/QuorinCtrlWrapper.jar)
set(QUORIN_JNI_HEADER_DIR ${CMAKE_BINARY_DIR}/java/jni)

add_custom_command(
  OUTPUT ${QUORIN_API_JAR} ${QUORIN_JNI_HEADER_DIR}/QuorinCtrlWrapper_QuorinCtrl.h
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${CMAKE_BINARY_DIR}/java/api
  # -Xdoclint: the javadoc of the API is complete and well-formed, or the build fails.
  COMMAND ${JAVAC_EXECUTABLE} -Xlint:all -Xdoclint -Werror --release 17 -encoding UTF-8
          -d ${CMAKE_BINARY_DIR}/java/api -h ${QUORIN_JNI_HEADER_DIR} ${QUORIN_API_SOURCES}
  COMMAND ${JAR_EXECUTABLE} cf ${QUORIN_API_JAR} -C ${CMAKE_BINARY_DIR}/java/api .
  DEPENDS ${QUORIN_API_SOURCES}
  COMMENT "Compiling the Java API and generating its JNI header")
add_custom_target(quorin_java_api DEPENDS ${QUORIN_API_JAR})

# quorin_add_jar(<target> <jar> SOURCES ...): compiles Java code against the API jar.
function(quorin_add_jar target jar)
  cmake_parse_arguments(ARG "" "" "SOURCES" ${ARGN})
  set(classes ${CMAKE_CURRENT_BINARY_DIR}/${target}_classes)
  add_custom_command(
    OUTPUT ${jar}
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${classes}
    COMMAND ${JAVAC_EXECUTABLE} -Xlint:all -Werror --release 17 -encoding UTF-8
            -cp ${QUORIN_API_JAR} -d ${classes} ${ARG_SOURCES}
    COMMAND ${JAR_EXECUTABLE} cf ${jar} -C ${classes} .
    DEPENDS ${ARG_SOURCES} ${QUORIN_API_JAR}
    COMMENT "Compiling ${target}")
  add_custom_target(${target} ALL DEPENDS ${jar})
  # The API jar is made by a command of another folder, which a file dependency cannot see.
  add_dependencies(${target} quorin_java_api)
endfunction()
