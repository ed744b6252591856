#pragma once
// The replies of the pipes as they go on the wire. Pure.

#include <cstdint>

#include "foundation/text.h"

namespace corvane {

// Codes of replies; those of a refused token stand with its check.
enum ReplyCode : std::uint32_t {
  kReplyOk = 0,
  kReplyBadRequest = 1,      // no JSON, or guid, path or type missing
  kReplyUnknownAdapter = 2,  // or an Exception
  kReplyNoIndex = 3,         // or another exception
  kReplyNoCommand = 5,
  kReplyUnknownCommand = 6,
  kReplyNoNameOrValue = 7,
  kReplyUnknownName = 8,
  kReplyFailed = 9,
  kReplyNoTarget = 10,
  kReplyOutOfRange = 11,
  kReplyNotDone = 12,
  kReplyEmptyProfile = 13,
  kReplyRefused = 14,
  kReplyBadEvent = 15,
  kReplyBudgetNotWritten = 16,
};

WString EchoReply(WStringView request);
WString ListReply(WStringView array);        // a JSON array
WString LogReply(WStringView base64);        // the memory log
WString DiagnosisReply(WStringView object);  // a JSON object
WString DiagnosisFailureReply(std::uint32_t code, WStringView object);
// `request` is quoted: each " becomes \", nothing else is changed.
WString FailureReply(std::uint32_t code, WStringView request);
WString RefusalReply(WStringView reason, WStringView request);
WString TokenFailureReply(std::uint32_t code);

struct Diagnosis {
  WString blast = u"0.0";
  std::int32_t apScore = -1;
  WString adapterClass = u"unknown";
  WString apClass = u"unknown";
  WString status = u"error";
};
WString DiagnosisObject(const Diagnosis& diagnosis);

}  // namespace corvane
