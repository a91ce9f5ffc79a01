// What the console shows, before it is laid out for people or as JSON.
#ifndef QORN_GATEWAY_OUTPUT_RECORDS_H_
#define QORN_GATEWAY_OUTPUT_RECORDS_H_

#include <string>
#include <utility>
#include <vector>

namespace gateway {

// One output of an operation, one string of an event's payload, one cell of a table.
struct Field {
  enum class Shape { kText, kNumber, kFlag, kList };

  std::string name;
  std::vector<std::string> values = {};  // one, or as many as a list has; none when unknown
  bool secret = false;                   // a token or an authorisation code
  Shape shape = Shape::kText;
};

inline Field NumberField(std::string name, long long number) {
  return {
      .name = std::move(name), .values = {std::to_string(number)}, .shape = Field::Shape::kNumber};
}

inline Field ListField(std::string name, std::vector<std::string> values) {
  return {.name = std::move(name), .values = std::move(values), .shape = Field::Shape::kList};
}

// A head line and the fields below it; as JSON one object: "type", the attributes, and the fields
// in an object of their own named `nested`, or beside the attributes when `nested` is "".
struct Record {
  std::string type;
  std::string head = {};
  std::vector<Field> attributes = {};
  std::string nested = {};
  std::vector<Field> fields = {};
};

// Columns under titles; as JSON one object for each row, with all its fields.
struct Table {
  struct Column {
    std::string field;
    std::string title;
  };

  std::string type;
  std::vector<Column> columns;
  std::vector<std::vector<Field>> rows = {};
  std::string empty = {};  // what people read instead of a table without rows
};

}  // namespace gateway

#endif  // QORN_GATEWAY_OUTPUT_RECORDS_H_
