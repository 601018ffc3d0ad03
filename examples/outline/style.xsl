<?xml version="1.0" encoding="UTF-8"?>
<!-- An article as an outline in plain text: numbers, titles and first sentences. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:import href="numbers.xsl"/>
  <xsl:output method="text" encoding="UTF-8"/>

  <xsl:template match="/article">
    <xsl:value-of select="title"/>
    <xsl:text>&#10;</xsl:text>
    <xsl:value-of select="subtitle"/>
    <xsl:text>&#10;</xsl:text>
    <xsl:apply-templates select="//section"/>
    <xsl:text>&#10;</xsl:text>
    <xsl:value-of select="concat(count(//section), ' sections, ', count(//note), ' notes, ',
        count(//ref), ' cross references')"/>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>

  <xsl:template match="section">
    <xsl:text>&#10;</xsl:text>
    <xsl:apply-templates select="." mode="number"/>
    <xsl:value-of select="concat('  ', title)"/>
    <xsl:text>&#10;     </xsl:text>
    <xsl:call-template name="first-sentence">
      <xsl:with-param name="text" select="concat(normalize-space(p), ' ')"/>
    </xsl:call-template>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>

  <!-- Up to the first question mark or full stop that a blank follows. -->
  <xsl:template name="first-sentence">
    <xsl:param name="text"/>
    <xsl:variable name="ends" select="translate($text, '?', '.')"/>
    <xsl:value-of select="substring($text, 1, string-length(substring-before($ends, '. ')) + 1)"/>
  </xsl:template>
</xsl:stylesheet>
