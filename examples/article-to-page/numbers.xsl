<?xml version="1.0" encoding="UTF-8"?>
<!-- The numbers of sections and tables, for contents, headings and references alike. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <!-- That of the section around it, a point, its place there: 2.1.3 -->
  <xsl:template match="section" mode="number">
    <xsl:if test="parent::section">
      <xsl:apply-templates select="parent::section" mode="number"/>
      <xsl:text>.</xsl:text>
    </xsl:if>
    <xsl:value-of select="count(preceding-sibling::section) + 1"/>
  </xsl:template>

  <!-- Tables count through the whole article. -->
  <xsl:template match="table" mode="number">
    <xsl:number level="any"/>
  </xsl:template>
</xsl:stylesheet>
