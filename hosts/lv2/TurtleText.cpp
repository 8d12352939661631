#include "hosts/lv2/TurtleText.h"

#include <charconv>
#include <cmath>

namespace lv2 {

const char kPrefixes[] = R"(@prefix atom: <http://lv2plug.in/ns/ext/atom#> .
@prefix bufsz: <http://lv2plug.in/ns/ext/buf-size#> .
@prefix doap: <http://usefulinc.com/ns/doap#> .
@prefix foaf: <http://xmlns.com/foaf/0.1/> .
@prefix log: <http://lv2plug.in/ns/ext/log#> .
@prefix lv2: <http://lv2plug.in/ns/lv2core#> .
@prefix midi: <http://lv2plug.in/ns/ext/midi#> .
@prefix opts: <http://lv2plug.in/ns/ext/options#> .
@prefix owl: <http://www.w3.org/2002/07/owl#> .
@prefix patch: <http://lv2plug.in/ns/ext/patch#> .
@prefix pg: <http://lv2plug.in/ns/ext/port-groups#> .
@prefix pprops: <http://lv2plug.in/ns/ext/port-props#> .
@prefix pset: <http://lv2plug.in/ns/ext/presets#> .
@prefix rdf: <http://www.w3.org/1999/02/22-rdf-syntax-ns#> .
@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .
@prefix rsz: <http://lv2plug.in/ns/ext/resize-port#> .
@prefix state: <http://lv2plug.in/ns/ext/state#> .
@prefix units: <http://lv2plug.in/ns/extensions/units#> .
@prefix urid: <http://lv2plug.in/ns/ext/urid#> .
@prefix work: <http://lv2plug.in/ns/ext/worker#> .
@prefix xsd: <http://www.w3.org/2001/XMLSchema#> .

)";

std::string Quote(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    if (c == '\n')
      quoted += "\\n";
    else if (c == '\r')
      quoted += "\\r";
    else if (c == '\t')
      quoted += "\\t";
    else
      quoted += c;
  }
  return quoted + "\"";
}

std::string FloatText(float value) {
  char text[64];
  const std::to_chars_result end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed);
  const std::string number(text, end.ptr);
  return number.find('.') == std::string::npos ? number + ".0" : number;
}

std::string WholeText(float value) {
  return std::to_string(std::lround(value));
}

std::string Reference(std::string_view uri, std::string_view part) {
  std::string text(1, '<');
  text += uri;
  if (!part.empty()) text.append(1, '#').append(part);
  return text.append(1, '>');
}

}  // namespace lv2
