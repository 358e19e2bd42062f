# Keeps, of alignments of reads to contigs (SAM), what belongs at the gaps: reads that hang over a
# contig's end by clipped bases, and the unaligned mates of reads that point at a contig's end.
# Variables: reach, the longest distance of a mate from the end, in bases.
/^@SQ/ {
  length_of[substr($2, 4)] = substr($3, 4)
  next
}
/^@/ { next }
{
  flag = $2
  unmapped = int(flag / 4) % 2
  if (unmapped) {
    # The mate's place stands in the record of an unaligned read.
    if (flag % 2 == 1 && int(flag / 8) % 2 == 0 && ($8 <= reach || length_of[$7 == "=" ? $3 : $7] - $8 <= reach)) print
    next
  }
  if ($6 !~ /S/) next
  aligned = 0
  clipped_front = match($6, /^[0-9]+S/)
  clipped_behind = $6 ~ /S$/
  rest = $6
  while (match(rest, /^[0-9]+[MDNSIH=X]/)) {
    if (substr(rest, RLENGTH, 1) ~ /[MDN=X]/) aligned += substr(rest, 1, RLENGTH - 1)
    rest = substr(rest, RLENGTH + 1)
  }
  if ((clipped_front && $4 <= 3) || (clipped_behind && $4 + aligned >= length_of[$3] - 2)) print
}
