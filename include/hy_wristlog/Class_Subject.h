#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "hy_wristlog/api.h"

namespace hy_wristlog {

/// The person who wears a logger. Dates are day counts from 30 December 1899.
class HY_WRISTLOG_API Class_Subject {
 public:
  const std::string& Get_Initials() const { return Initials_; }
  void Let_Initials(std::string value) { Initials_ = std::move(value); }
  /// Whole years from the date of birth to now, as text; "0" without a date of birth. Raises fault 5 for a
  /// date outside the years 100 to 9999.
  std::string Get_Age() const;
  double Get_DOB() const { return DOB_; }
  void Let_DOB(double value) { DOB_ = value; }
  /// One capital letter, or empty.
  const std::string& Get_Gender() const { return Gender_; }
  /// Keeps the first character of the value, in upper case.
  void Let_Gender(std::string_view value);
  const std::string& Get_GUID() const { return GUID_; }
  void Let_GUID(std::string value) { GUID_ = std::move(value); }
  const std::string& Get_Identity() const { return Identity_; }
  void Let_Identity(std::string value) { Identity_ = std::move(value); }
  float Get_Height() const { return Height_; }
  void Let_Height(float value) { Height_ = value; }
  float Get_Weight() const { return Weight_; }
  void Let_Weight(float value) { Weight_ = value; }

 private:
  std::string Initials_, Gender_, GUID_, Identity_;
  double DOB_ = 0;
  float Height_ = 0, Weight_ = 0;
};

}  // namespace hy_wristlog
