# The JSON of all shards as one report:
#
#   jq --null-input --raw-input --from-file merge-reports.jq shard-*.json >report.json
#
# A shard without a summary was killed or has not begun: it is missing in "shards_ended", and the exit
# status of all is null. A line that it did not finish is passed over.
def summaries: map(select(.type == "summary"));
def total(key): summaries | map(.[key]) | add // 0;
[inputs | fromjson?] |
(map(select(.type == "plan") | .shard.count) | max) as $shards |
(summaries | length) as $ended |
{
  shards: $shards,
  shards_ended: $ended,
  written: total("written"),
  failed: total("failed"),
  skipped: total("skipped"),
  exit_status: (if $ended < $shards then null else summaries | map(.exit_status) | max end),
  errors: (summaries | map(.errors[], .manifest_error, .report_error | values) | unique),
  files: (map(select(.type == "file")) | sort_by(.name))
}
