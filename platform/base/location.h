// Where in the source a task was posted or a line was logged.
#ifndef QORN_PLATFORM_BASE_LOCATION_H_
#define QORN_PLATFORM_BASE_LOCATION_H_

namespace tracked_objects {

// Borrows its texts, which live as long as the program (FROM_HERE gives literals).
class Location {
 public:
  Location(const char* function_name, const char* file_name, int line_number)
      : function_name_(function_name), file_name_(file_name), line_number_(line_number) {}

  const char* function_name() const { return function_name_; }
  const char* file_name() const { return file_name_; }
  int line_number() const { return line_number_; }

 private:
  const char* function_name_;
  const char* file_name_;
  int line_number_;
};

}  // namespace tracked_objects

// File names are relative to the repository's root, by a compiler flag of the build.
#define FROM_HERE tracked_objects::Location(__func__, __FILE__, __LINE__)

#endif  // QORN_PLATFORM_BASE_LOCATION_H_
