#pragma once

#include "hy_wristlog/Class_Subject.h"
#include "tools/Class_Tools.h"

/// A subject and a record, VardenRecord or PendrelRecord, that keeps each of its properties as "Subject" and
/// the property's name. The table of the properties is the only list of them.
namespace hy_wristlog {

/// The subject that a logger's record tells of.
template <class Record>
Class_Subject subjectOf(const Record& record) {
  Class_Subject subject;
#define HY_STORED(Name, Type) subject.Let_##Name(record.Subject##Name);
#define HY_TIDIED(Name, Type) HY_STORED(Name, Type)
#define HY_COMPUTED(Name, Type)
#include "hy_wristlog/subject_properties.inc"
  return subject;
}

/// Puts the subject into a record that is to be sent. An empty identity becomes the logger's serial number
/// and an empty GUID a new one, in the subject too.
template <class Record>
void putSubject(Record& record, Class_Subject& subject) {
  if (subject.Get_Identity().empty()) subject.Let_Identity(record.SerialNumber);
  if (subject.Get_GUID().empty()) subject.Let_GUID(Tools().fncCreateGUID());
#define HY_STORED(Name, Type) record.Subject##Name = subject.Get_##Name();
#define HY_TIDIED(Name, Type) HY_STORED(Name, Type)
#define HY_COMPUTED(Name, Type)
#include "hy_wristlog/subject_properties.inc"
}

}  // namespace hy_wristlog
