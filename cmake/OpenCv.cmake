# tavrix_opencv: image processing of OpenCV. Debian's packages of single modules bring no CMake configuration.
find_path(TAVRIX_OPENCV_INCLUDE opencv2/imgproc.hpp PATH_SUFFIXES opencv4)
find_library(TAVRIX_OPENCV_CORE opencv_core)
find_library(TAVRIX_OPENCV_IMGPROC opencv_imgproc)
if(TAVRIX_OPENCV_INCLUDE AND TAVRIX_OPENCV_CORE AND TAVRIX_OPENCV_IMGPROC)
  add_library(tavrix_opencv INTERFACE)
  target_include_directories(tavrix_opencv SYSTEM INTERFACE ${TAVRIX_OPENCV_INCLUDE})
  target_link_libraries(tavrix_opencv INTERFACE ${TAVRIX_OPENCV_IMGPROC} ${TAVRIX_OPENCV_CORE})
endif()
