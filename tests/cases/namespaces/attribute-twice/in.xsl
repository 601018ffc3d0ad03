<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:output omit-xml-declaration="yes" indent="yes"/>
  <xsl:attribute-set name="inner"><xsl:attribute name="a">set</xsl:attribute><xsl:attribute name="c">set</xsl:attribute></xsl:attribute-set>
  <xsl:attribute-set name="outer" use-attribute-sets="inner"/>
  <xsl:template match="/r">
    <results>
      <copy-of id="literal" z="1"><xsl:copy-of select="@*"/></copy-of>
      <copy id="literal" z="1"><xsl:for-each select="@*"><xsl:copy/></xsl:for-each></copy>
      <set xsl:use-attribute-sets="outer" a="literal"/>
      <instruction><xsl:copy-of select="@id"/><xsl:attribute name="id">instruction</xsl:attribute><xsl:copy-of select="@id"/></instruction>
      <other-prefix xmlns:c="urn:b" c:m="1" z="1"><xsl:copy-of select="@*"/></other-prefix>
      <content id="literal"><xsl:for-each select="@id"><xsl:copy>not shown</xsl:copy></xsl:for-each></content>
      <xsl:variable name="fragment"><in id="literal"><xsl:copy-of select="@id"/></in></xsl:variable>
      <xsl:copy-of select="$fragment"/>
      <xsl:copy><xsl:copy-of select="@*"/><xsl:attribute name="id">instruction</xsl:attribute></xsl:copy>
      <many a1="" a2="" a3="" a4="" a5="" a6="" a7="" a8="" a9="" a10="" a11="" a12="" a13="" a14="" a15="" a16="" a17="" id="literal" a19="">
        <xsl:copy-of select="@*"/>
        <xsl:for-each select="@*"><xsl:copy/></xsl:for-each>
        <xsl:attribute name="a19">instruction</xsl:attribute>
        <xsl:attribute name="b:m" namespace="urn:b">instruction</xsl:attribute>
      </many>
    </results>
  </xsl:template>
</xsl:stylesheet>
