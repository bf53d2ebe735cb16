# The JSON of all shards as one report:
#
#   jq --null-input --raw-input --from-file merge-reports.jq shard-*.json >report.json
#
# A shard without a summary was killed or has not begun: it is missing in "shards_ended", and the exit
# status of all is null. One that ended twice, in reports of two attempts, counts once. A line that a
# killed shard did not finish is passed over; jq reads the next report's first line as its end.
def parsed: fromjson? // (capture("(?<plan>{\"type\":\"plan\",.*)").plan | fromjson?);
[inputs | parsed | {report: input_filename, line: .}] as $told |
def lines(type): $told | map(.line | select(.type == type));
def total(key): lines("summary") | map(.[key]) | add // 0;
def shard: map(.line | select(.type == "plan") | .shard.number);
(lines("plan") | map(.shard.count) | max) as $shards |
($told | group_by(.report) | map(select(any(.line.type == "summary")) | shard[]) | unique | length)
  as $ended |
{
  shards: $shards,
  shards_ended: $ended,
  written: total("written"),
  failed: total("failed"),
  skipped: total("skipped"),
  exit_status: (if $ended < $shards then null else lines("summary") | map(.exit_status) | max end),
  errors: (lines("summary") | map(.errors[], .manifest_error, .report_error | values) | unique),
  files: (lines("file") | sort_by(.name))
}
